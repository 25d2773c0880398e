#pragma once

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/system_log.h"

namespace vorlu {

/// Lines "{type} [com.mosk.vorlu:{category}] {message}" in /private/var/log/system.log.
class LinuxSystemLog : public SystemLog {
 public:
  static constexpr const char* path = "/private/var/log/system.log";

  explicit LinuxSystemLog(FileManager& files) : files_(files) {}

  void record(RecordType type, std::string_view category, std::string_view message) override;

 private:
  FileManager& files_;
};

}  // namespace vorlu
