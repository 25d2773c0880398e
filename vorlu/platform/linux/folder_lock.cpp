#include "vorlu/platform/linux/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <thread>

namespace vorlu {
namespace {

constexpr int attempts = 1000;
constexpr std::chrono::milliseconds gap{10};

}  // namespace

FolderLock::FolderLock(const std::string& hostFolder)
    : folder_(uninterrupted([&] { return ::open(hostFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })) {
  for (int attempt = 0; folder_ && attempt < attempts; ++attempt) {
    if (::flock(folder_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
    std::this_thread::sleep_for(gap);
  }
}

}  // namespace vorlu
