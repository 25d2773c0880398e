#include "vorlu/install/verification.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/processor.h"
#include "vorlu/install/architecture.h"
#include "vorlu/platform/regular_expression.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::string_view unsignedText = "Error: App is not signed";

bool isSameFile(const FileInfo& a, const FileInfo& b) {
  return a.device == b.device && a.inode == b.inode && a.size == b.size && a.modified == b.modified;
}

/// What a tool says of an item. It shows the item's path as it is, and a line break in that would forge a line.
ProcessResult runSignatureTool(Vorlu& vorlu, const std::string& program, std::vector<std::string> arguments) {
  if (arguments.back().find_first_of("\r\n") != std::string::npos) return {};
  Command command;
  command.program = program;
  command.arguments = std::move(arguments);
  return runTool(vorlu.platform.processes, vorlu.log, command);
}

/// What `codesign` says of the signature itself: above stand the names of a program and an identifier, whose line
/// breaks could forge any line. An item without a signature has nothing but its path.
std::string_view signatureLines(const ProcessResult& result) {
  constexpr std::string_view firstOwnLine = "\nFormat=";
  const std::string_view output = result.output;
  if (result.status != 0) return {};
  const std::size_t start = output.rfind(firstOwnLine);
  return start == std::string_view::npos ? output : output.substr(start);
}

std::vector<std::string> nonEmptyLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (!line.empty()) lines.emplace_back(line);
  }
  return lines;
}

/// What stands behind `marker`, without blanks around it.
std::optional<std::string> behind(std::string_view line, std::string_view marker) {
  const std::size_t at = line.find(marker);
  if (at == std::string_view::npos) return std::nullopt;
  return trimmed(line.substr(at + marker.size()));
}

/// The second of the parts of "Authority=Type: Developer".
std::optional<std::string> secondPart(std::string_view line) {
  const std::size_t start = line.find(": ");
  if (start == std::string_view::npos) return std::nullopt;
  const std::string_view rest = line.substr(start + 2);
  return trimmed(rest.substr(0, rest.find(": ")));
}

/// The answer when no line names a developer.
std::string unnamed(Vorlu& vorlu, std::string_view output, std::string_view unsignedMark) {
  if (output.find(unsignedMark) == std::string_view::npos) return "Unknown";
  vorlu.log(unsignedText);
  return std::string(unsignedText);
}

}  // namespace

std::optional<std::string> fileSha256(Vorlu& vorlu, const std::string& path, const std::optional<FileDigest>& known) {
  if (known) {
    const auto now = vorlu.platform.files.info(path);
    if (now && isSameFile(*now, known->file)) return known->sha256;
  }
  auto digest = vorlu.platform.files.sha256(path);
  if (digest) return std::move(*digest);
  vorlu.log(fmt::format("Warning: Could not obtain file hash for file {} - {}", path, digest.error()));
  return std::nullopt;
}

const std::string& expectedInstallerHash(Vorlu& vorlu) {
  const CurrentApp& app = vorlu.currentApp;
  if (isUniversal(app)) return app.universalInstallerHash;
  return processor(vorlu.platform.device) == Processor::silicon ? app.siliconInstallerHash : app.intelInstallerHash;
}

void logHashAsGiven(Vorlu& vorlu) {
  vorlu.log(fmt::format("Downloaded installer hash: {}", expectedInstallerHash(vorlu)));
  vorlu.log("The installer hash matches the expected sha256 hash. Continuing...");
}

HashCheck verifyInstallerHash(Vorlu& vorlu, const std::string& path, const std::optional<FileDigest>& known) {
  HashCheck check{expectedInstallerHash(vorlu), fileSha256(vorlu, path, known).value_or("Unknown")};
  vorlu.log(fmt::format("Downloaded installer hash: {}", check.actual));
  if (check.matches()) vorlu.log("The installer hash matches the expected sha256 hash. Continuing...");
  return check;
}

std::string readPackageSignature(Vorlu& vorlu, const std::string& path) {
  const std::string output = runSignatureTool(vorlu, "/usr/sbin/pkgutil", {"--check-signature", path}).output;
  for (const std::string& line : nonEmptyLines(output)) {
    if (const auto signature = behind(line, "Developer ID Installer: ")) {
      vorlu.log(fmt::format("Found signature: {}", *signature));
      return *signature;
    }
    if (const auto signature = behind(line, "3rd Party Mac Developer Installer: ")) {
      vorlu.platform.console.print(fmt::format("Found signature: {}", *signature));
      return *signature;
    }
  }
  return unnamed(vorlu, output, "no signature");
}

std::string readCodeSignature(Vorlu& vorlu, const std::string& path) {
  const ProcessResult result = runSignatureTool(vorlu, "/usr/bin/codesign", {"-dv", "--verbose=4", path});
  // From the line's beginning, as the tool writes it.
  static const auto authority = RegularExpression::compile("^(Authority=.*:.*(.*))");
  for (const std::string& line : nonEmptyLines(signatureLines(result))) {
    const auto match = authority ? authority->firstMatch(trimmed(line)) : std::nullopt;
    const auto signature = match ? secondPart(*match) : std::nullopt;
    if (!signature) continue;
    vorlu.log(fmt::format("Found signature: {}", *signature));
    return *signature;
  }
  return unnamed(vorlu, result.output, "code object is not signed at all");
}

bool matchesExpectedSignature(Vorlu& vorlu, const std::string& signature) {
  const std::string& expected = vorlu.currentApp.expectedCodeSignature;
  if (expected.empty() || signature != expected) return false;
  vorlu.log("Signing verification complete. The App matches the expected code signing. Continuing...");
  return true;
}

}  // namespace vorlu
