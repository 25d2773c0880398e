#include "vorlu/state/log.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "vorlu/state/error_record.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"

namespace vorlu {
namespace {

constexpr std::string_view refusalWords = "Expected to decode Array<Any> but found a dictionary instead.";
constexpr std::string_view refusalShown = "Server temporarily unavailable. Please try again later";

/// What tells of a passing condition of server or network, or would repeat one; such messages stay out of the report.
constexpr std::array errorExclusions = {
    refusalWords,
    std::string_view("Could not collect Vorlu App information"),
    std::string_view("No data was received"),
    std::string_view("No response was received"),
    std::string_view("Vorlu server data decode failed"),
    std::string_view("Could not obtain the last certificate"),
    std::string_view("Failed to submit reporting data"),
    std::string_view("No data was received from the server request"),
    std::string_view("Certificate validation data decode failed"),
    std::string_view("HTTP status code"),
    std::string_view("typeMismatch"),
    std::string_view("Could not submit report data"),
};
constexpr std::array warningExclusions = {
    std::string_view("Could not obtain"),          std::string_view("An error was received from the server"),
    std::string_view("No data was received"),      std::string_view("No internet connection was detected"),
    std::string_view("Using offline cached data"), std::string_view("The Vorlu server"),
    std::string_view("HTTP status code"),          std::string_view("typeMismatch"),
    std::string_view("No data received"),          std::string_view("No response received"),
    std::string_view("No response was received"),
};

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

template <class List>
bool containsAny(std::string_view text, const List& parts) {
  return std::any_of(parts.begin(), parts.end(), [text](std::string_view part) { return contains(text, part); });
}

/// The end of the parenthesised description that begins at `start`, or npos when its brackets don't close.
std::size_t endOfDescription(std::string_view text, std::size_t start) {
  int depth = 0;
  for (std::size_t at = start; at < text.size(); ++at) {
    if (text[at] == '(') ++depth;
    if (text[at] == ')' && --depth == 0) return at + 1;
  }
  return std::string_view::npos;
}

/// The whole type mismatch description that carries the words of a refusal; empty when there is none.
std::string_view refusalDescription(std::string_view message) {
  const std::size_t words = message.find(refusalWords);
  if (words == std::string_view::npos) return {};
  const std::size_t start = message.rfind("typeMismatch(", words);
  if (start == std::string_view::npos) return {};
  const std::size_t end = endOfDescription(message, start);
  if (end == std::string_view::npos || end < words) return {};
  return message.substr(start, end - start);
}

/// Foreign text must not forge lines: control characters are written as escapes.
std::string oneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\t') {
      line += "\\t";
    } else if (c == '\r') {
      line += "\\r";
    } else if (byte < 0x20 || byte == 0x7f) {
      line += fmt::format("\\x{:02x}", byte);
    } else {
      line += c;
    }
  }
  return line;
}

const Ownership logOwnership{0644, "root", "wheel"};

}  // namespace

std::string scrubbed(std::string_view message) {
  if (const std::string_view description = refusalDescription(message); !description.empty()) {
    return replacedAll(message, description, refusalShown);
  }
  return replacedAll(message, refusalWords, refusalShown);
}

bool isFiledError(std::string_view message) {
  return contains(message, "Error: ") && !containsAny(message, errorExclusions);
}

bool isFiledWarning(std::string_view message) {
  return contains(message, "Warning: ") && !containsAny(message, warningExclusions);
}

void Log::operator()(std::string_view message, bool quiet) {
  const std::scoped_lock lock(mutex_);
  const std::string text = oneLine(scrubbed(message));
  const RecordType type = contains(message, "Error")     ? RecordType::error
                          : contains(message, "Warning") ? RecordType::fault
                                                         : RecordType::standard;
  platform_.systemLog.record(type, runStage_, text);
  platform_.console.flush();
  const Status written = platform_.files.append(paths::log, fileLine(text), logOwnership);
  if (!quiet) platform_.console.print(text);
  if (!written) reportWriteFailure(paths::log, written.error());
  if (isFiledError(message)) file(message, &ErrorStruct::vorluErrors);
  if (isFiledWarning(message)) file(message, &ErrorStruct::vorluWarnings);
}

void Log::logForJamf(std::string_view message) {
  const std::scoped_lock lock(mutex_);
  const std::string line =
      fmt::format("{} [Username: {}]: {}\n", formatDate(platform_.clock, platform_.clock.now(), DateForm::logLine),
                  platform_.consoleUser.name(), oneLine(message));
  const std::string folder = paths::jamfLog.substr(0, paths::jamfLog.rfind('/'));
  if (!platform_.files.exists(folder)) platform_.files.createDirectory(folder, {0755, "root", "wheel"});
  const Status written = platform_.files.append(paths::jamfLog, line, logOwnership);
  if (!written) (*this)(fmt::format("Error writing to {}: {}", paths::jamfLog, written.error()));
}

std::string Log::fileLine(std::string_view text) {
  if (!pid_) pid_ = platform_.processes.ownPid();
  return fmt::format("{} {} vorlu[{}]: {}\n", formatDate(platform_.clock, platform_.clock.now(), DateForm::logLine),
                     platform_.device.serialNumber().value_or("Unknown"), *pid_, text);
}

void Log::reportWriteFailure(const std::string& path, const std::string& error) {
  if (reportingFailure_) return;
  reportingFailure_ = true;
  const std::string line = fmt::format("Error writing to {}: {}", path, error);
  platform_.console.print(line);
  (*this)(line, silent);
  reportingFailure_ = false;
}

void Log::file(std::string_view message, std::optional<std::vector<VorluErrors>> ErrorStruct::*list) {
  ErrorStruct record;
  if (Result<std::string> text = platform_.files.read(paths::errors)) {
    if (auto decoded = decodeJson<ErrorStruct>(std::move(*text))) record = std::move(*decoded);
  }
  for (auto* both : {&record.vorluErrors, &record.vorluWarnings}) {
    if (!*both) both->emplace();
  }
  (record.*list)
      ->push_back({formatDate(platform_.clock, platform_.clock.now(), DateForm::fullStamp), std::string(message)});
  const Status written =
      platform_.files.writeAtomically(paths::errors, encodeJson(record, JsonLayout::pretty), logOwnership);
  if (!written) {
    (*this)(fmt::format("Error writing to App Inventory JSON file: {})", written.error()));
    return;
  }
  platform_.files.setHidden(paths::errors);
}

}  // namespace vorlu
