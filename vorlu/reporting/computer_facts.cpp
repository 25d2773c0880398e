#include "vorlu/reporting/computer_facts.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>
#include <vector>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/state/shell_line.h"
#include "vorlu/state/tool.h"

namespace vorlu {
namespace {

constexpr std::chrono::seconds longestQuestion{60};
constexpr std::size_t longestAnswer = std::size_t{1} << 20;  // bytes

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string orUnknown(std::string text) {
  return text.empty() ? unknownFact : std::move(text);
}

/// What stands behind `label` on its line; "Unknown" without such a line.
std::string lineBehind(std::string_view text, std::string_view label) {
  const std::size_t at = text.find(label);
  if (at == std::string_view::npos) return unknownFact;
  text.remove_prefix(at + label.size());
  return orUnknown(trimmed(text.substr(0, text.find('\n'))));
}

std::string hardwareProfile(SystemTools& tools) {
  return tools.output("/usr/sbin/system_profiler", {"SPHardwareDataType"});
}

}  // namespace

std::string SystemTools::output(const std::string& program, std::vector<std::string> arguments) {
  Command command;
  command.program = program;
  command.arguments = std::move(arguments);
  ProcessResult result = run(std::move(command));
  return result.status == 0 ? std::move(result.output) : "";
}

ProcessResult SystemTools::shell(const std::string& line) {
  return run(shellCommand(line));
}

ProcessResult SystemTools::run(Command command) {
  command.limit = longestQuestion;
  command.outputCap = longestAnswer;
  ProcessResult result = runTool(processes_, log_, command);
  if (result.timedOut) result.output.clear();
  return result;
}

std::string computerName(Device& device) {
  return orUnknown(device.computerName());
}

std::string modelNumber(Device& device) {
  return orUnknown(device.productDescription().value_or(""));
}

std::string modelName(SystemTools& tools) {
  return lineBehind(hardwareProfile(tools), "Model Name: ");
}

std::string architecture(SystemTools& tools) {
  return lineBehind(hardwareProfile(tools), "Chip: ");
}

bool isFileVaultEnabled(SystemTools& tools) {
  return contains(tools.output("/usr/bin/fdesetup", {"status"}), "FileVault is On");
}

bool isGatekeeperEnabled(SystemTools& tools) {
  return contains(tools.output("/usr/sbin/spctl", {"--status"}), "assessments enabled");
}

bool isSipEnabled(SystemTools& tools) {
  return contains(tools.output("/usr/bin/csrutil", {"status"}), "enabled");
}

std::string readDiskSpace(FileManager& files, bool capacity) {
  constexpr std::int64_t gigabyte = 1'000'000'000;
  const std::optional<std::int64_t> bytes = capacity ? files.diskCapacity() : files.freeDiskSpace();
  if (!bytes) return unknownFact;
  return fmt::format("{} GB", *bytes / gigabyte + (*bytes % gigabyte >= gigabyte / 2 ? 1 : 0));
}

std::string readFullName(SystemTools& tools, const std::string& user) {
  if (user.empty()) return unknownFact;
  ProcessResult answer = tools.shell(fmt::format("su {} -c \"id -F\"", shellWord(user)));
  if (contains(answer.output, "id: invalid option")) answer = tools.shell(fmt::format("id -F {}", shellWord(user)));
  const bool refused = contains(answer.output, "su:") || contains(answer.output, "command not found");
  return refused || answer.status != 0 ? unknownFact : orUnknown(trimmed(answer.output));
}

}  // namespace vorlu
