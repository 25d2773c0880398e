#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "vorlu/platform/console.h"
#include "vorlu/platform/system_log.h"

namespace vorlu::test {

using Lines = std::vector<std::string>;

/// Keeps lines that any thread may add.
class RecordedLines {
 public:
  Lines lines() {
    const std::scoped_lock lock(mutex_);
    return lines_;
  }
  /// The lines since the last call.
  Lines take() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(lines_, {});
  }

 protected:
  void add(std::string_view line) {
    const std::scoped_lock lock(mutex_);
    lines_.emplace_back(line);
  }

 private:
  std::mutex mutex_;
  Lines lines_;
};

struct RecordingConsole : Console, RecordedLines {
  void print(std::string_view line) override { add(line); }
  void flush() override {}
};

/// Keeps the messages alone: all that the log was told, also what isn't shown.
struct RecordingSystemLog : SystemLog, RecordedLines {
  void record(RecordType /*type*/, std::string_view /*category*/, std::string_view message) override { add(message); }
};

}  // namespace vorlu::test
