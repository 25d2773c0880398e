#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "vorlu/platform/system_log.h"

namespace vorlu::test {

struct SystemRecord {
  RecordType type = RecordType::standard;
  std::string category;
  std::string message;
  bool operator==(const SystemRecord&) const = default;
};

/// Keeps the records.
class RecordingSystemLog : public SystemLog {
 public:
  void record(RecordType type, std::string_view category, std::string_view message) override {
    const std::scoped_lock lock(mutex_);
    records_.push_back({type, std::string(category), std::string(message)});
  }

  std::vector<SystemRecord> records() {
    const std::scoped_lock lock(mutex_);
    return records_;
  }
  void clear() {
    const std::scoped_lock lock(mutex_);
    records_.clear();
  }

 private:
  std::mutex mutex_;
  std::vector<SystemRecord> records_;
};

}  // namespace vorlu::test
