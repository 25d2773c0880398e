#include "vorlu/cli/command_option.h"

#include <array>
#include <utility>

namespace vorlu {
namespace {

constexpr std::array<std::pair<std::string_view, CommandOption>, 18> tokens = {{
    {"h", CommandOption::help},
    {"i", CommandOption::install},
    {"-install", CommandOption::install},
    {"ip", CommandOption::installProgress},
    {"-installProgress", CommandOption::installProgress},
    {"it", CommandOption::installTest},
    {"u", CommandOption::update},
    {"-update", CommandOption::update},
    {"ut", CommandOption::updateTest},
    {"c", CommandOption::check},
    {"-check", CommandOption::check},
    {"q", CommandOption::quit},
    {"v", CommandOption::version},
    {"-version", CommandOption::version},
    {"r", CommandOption::report},
    {"-report", CommandOption::report},
    {"-init", CommandOption::initialise},
    {"dk", CommandOption::deleteKeys},
}};

}  // namespace

CommandOption optionForToken(std::string_view token) {
  for (const auto& [known, option] : tokens) {
    if (known == token) return option;
  }
  return CommandOption::unknown;
}

CommandOption optionForArgument(std::string_view argument) {
  if (argument.empty()) return CommandOption::unknown;
  std::size_t length = 1;  // a character may take several bytes of UTF-8
  while (length < argument.size() && (static_cast<unsigned char>(argument[length]) & 0xC0) == 0x80) ++length;
  return optionForToken(argument.substr(length));
}

}  // namespace vorlu
