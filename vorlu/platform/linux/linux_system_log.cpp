#include "vorlu/platform/linux/linux_system_log.h"

#include <fmt/format.h>

#include <algorithm>

namespace vorlu {
namespace {

std::string_view nameOf(RecordType type) {
  switch (type) {
    case RecordType::error:
      return "Error";
    case RecordType::fault:
      return "Fault";
    case RecordType::standard:
      break;
  }
  return "Default";
}

}  // namespace

void LinuxSystemLog::record(RecordType type, std::string_view category, std::string_view message) {
  std::string line = fmt::format("{} [com.mosk.vorlu:{}] {}", nameOf(type), category, message);
  std::replace(line.begin(), line.end(), '\n', ' ');
  static_cast<void>(files_.append(path, line + "\n", {0644, "root", "wheel"}));
}

}  // namespace vorlu
