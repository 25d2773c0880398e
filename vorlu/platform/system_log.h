#pragma once

#include <string_view>

namespace vorlu {

enum class RecordType { standard, error, fault };

/// Stands for os_log with subsystem "com.mosk.vorlu" and the public format "%{public}@". Failures aren't detected.
class SystemLog {
 public:
  virtual ~SystemLog() = default;
  virtual void record(RecordType type, std::string_view category, std::string_view message) = 0;
};

}  // namespace vorlu
