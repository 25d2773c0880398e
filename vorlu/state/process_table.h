#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorlu/platform/clock.h"
#include "vorlu/platform/result.h"

namespace vorlu {

struct Vorlu;

/// A process as `ps` shows it.
struct ProcessRow {
  pid_t pid = 0;
  pid_t parent = 0;
  std::string user;
  std::int64_t age = 0;  ///< seconds since it was started
  std::string program;   ///< its path, or its bare name when it was found by that
};

struct ProcessTable {
  Seconds when = 0;  ///< the moment at which it was read
  std::vector<ProcessRow> rows;

  const ProcessRow* find(pid_t pid) const;
  /// A process, its parent and theirs in turn.
  std::vector<pid_t> lineOf(pid_t pid) const;
  /// Whether `pid` was started by `ancestor`, by what that started, and so on.
  bool descends(pid_t pid, pid_t ancestor) const;
};

/// All processes. Lines that can't be read are left out.
Result<ProcessTable> readProcessTable(Vorlu& vorlu);

/// A process's command line.
struct CommandLine {
  pid_t pid = 0;
  std::string text;
};
Result<std::vector<CommandLine>> readCommandLines(Vorlu& vorlu);

/// Seconds since a process was started; nothing when it has gone.
std::optional<std::int64_t> processAge(Vorlu& vorlu, pid_t pid);

/// `[[dd-]hh:]mm:ss` in seconds; nothing for any other text.
std::optional<std::int64_t> parseElapsed(std::string_view text);

}  // namespace vorlu
