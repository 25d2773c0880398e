#include "simulator/dialog/command.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vorlu::simulator {

namespace {

using Kind = Command::Kind;
constexpr std::pair<std::string_view, Kind> words[] = {
    {"progress", Kind::progress}, {"progresstext", Kind::progressText},
    {"title", Kind::title},       {"message", Kind::message},
    {"icon", Kind::icon},         {"listitem", Kind::listItem},
    {"quit", Kind::quit},
};

}  // namespace

Command parseCommand(const std::string& line) {
  const auto colon = line.find(':');
  if (colon == std::string::npos) return {};
  const std::string_view word = std::string_view(line).substr(0, colon);
  const auto* known = std::find_if(std::begin(words), std::end(words), [&](const auto& w) { return w.first == word; });
  if (known == std::end(words)) return {};
  std::string value = line.substr(colon + 1);
  if (value.starts_with(' ')) value.erase(0, 1);
  return {known->second, value};
}

}  // namespace vorlu::simulator
