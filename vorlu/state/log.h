#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/platform.h"
#include "vorlu/state/error_record.h"

namespace vorlu {

/// Second argument of a log call whose line is for the file alone.
inline constexpr bool silent = true;

/// The agent's log: /var/log/Vorlu.log, the system log, the console, and the record of errors and warnings for the
/// report. No operation fails for its caller. Several threads may log.
class Log {
 public:
  /// `runStage` is the category of system log records; it is read at each message.
  Log(Platform& platform, const std::string& runStage) : platform_(platform), runStage_(runStage) {}

  /// One message. Its wording decides: "Error: " and "Warning: " messages are filed for the report unless they tell of
  /// a passing condition of the network.
  void operator()(std::string_view message, bool quiet = false);
  /// One line for Jamf Pro's extension attribute.
  void logForJamf(std::string_view message);

 private:
  std::string fileLine(std::string_view text);
  void reportWriteFailure(const std::string& path, const std::string& error);
  void file(std::string_view message, std::optional<std::vector<VorluErrors>> ErrorStruct::*list);

  Platform& platform_;
  const std::string& runStage_;
  std::optional<pid_t> pid_;
  bool reportingFailure_ = false;
  std::recursive_mutex mutex_;  ///< a failed write is logged too
};

/// `message` with the two texts by which a server's refusal shows in the catalog decoder replaced by plain words.
std::string scrubbed(std::string_view message);

/// Whether a message belongs into the report's lists of errors and warnings.
bool isFiledError(std::string_view message);
bool isFiledWarning(std::string_view message);

}  // namespace vorlu
