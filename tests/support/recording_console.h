#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "vorlu/platform/console.h"

namespace vorlu::test {

/// Keeps the printed lines.
class RecordingConsole : public Console {
 public:
  void print(std::string_view line) override {
    const std::scoped_lock lock(mutex_);
    lines_.emplace_back(line);
  }
  void flush() override {}

  std::vector<std::string> lines() {
    const std::scoped_lock lock(mutex_);
    return lines_;
  }
  void clear() {
    const std::scoped_lock lock(mutex_);
    lines_.clear();
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace vorlu::test
