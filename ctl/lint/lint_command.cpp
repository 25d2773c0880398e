#include "ctl/lint/lint_command.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "ctl/lint/catalog_lint.h"
#include "ctl/lint/preferences_lint.h"
#include "vorlu/platform/result.h"

namespace vorlu::ctl {
namespace {

constexpr std::uintmax_t largestFile = std::uintmax_t{256} << 20;  // what the agent reads, too

Result<std::string> readFile(const std::string& path) {
  std::error_code error;
  const auto kind = std::filesystem::status(path, error).type();
  if (error) return Failure{fmt::format("{}: {}", path, error.message())};
  if (kind != std::filesystem::file_type::regular) return Failure{fmt::format("{}: isn't a file", path)};
  if (std::filesystem::file_size(path, error) > largestFile)
    return Failure{fmt::format("{}: is larger than {} MiB", path, largestFile >> 20)};
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad()) return Failure{fmt::format("{}: {}", path, std::strerror(errno))};
  return bytes;
}

template <class Lint>
Answer lintFile(const char* command, Arguments arguments, Lint lint) {
  const bool asJson = takeFlag(arguments, "--json");
  if (arguments.size() != 1 || arguments[0].starts_with("-"))
    return {2, fmt::format("usage: vorluctl {} FILE [--json]\n", command)};
  const Result<std::string> bytes = readFile(arguments[0]);
  if (!bytes) return {2, fmt::format("vorluctl {}: {}\n", command, bytes.error())};
  Findings findings = lint(*bytes);
  const auto& sorted = findings.sorted();
  return {findings.hasErrors() ? 1 : 0,
          asJson ? findingsAsJson(arguments[0], sorted) : findingsAsText(arguments[0], sorted)};
}

}  // namespace

Answer lintCatalogCommand(const Arguments& arguments) {
  return lintFile("lint-catalog", arguments, [](const std::string& text) { return lintCatalog(text); });
}

Answer lintPrefsCommand(const Arguments& arguments) {
  return lintFile("lint-prefs", arguments, [](const std::string& bytes) { return lintPreferences(bytes); });
}

}  // namespace vorlu::ctl
