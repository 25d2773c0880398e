#include "vorlu/platform/linux/process_ids.h"

#include <dirent.h>

#include <cstdlib>
#include <memory>

namespace vorlu {
namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

}  // namespace

std::vector<pid_t> processIds() {
  std::vector<pid_t> ids;
  const std::unique_ptr<DIR, CloseFolder> folder(::opendir("/proc"));
  while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
    const auto id = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    if (id > 0) ids.push_back(id);
  }
  return ids;
}

}  // namespace vorlu
