#include "vorlu/platform/linux/temporary_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace vorlu {

std::string temporaryName(std::string_view prefix) {
  std::uint64_t number = 0;
  if (uninterrupted([&] { return ::getrandom(&number, sizeof number, 0); }) != sizeof number)
    throw std::runtime_error("The system gives no random bytes");
  return fmt::format("{}{:016x}", prefix, number);
}

Result<TemporaryFile> TemporaryFile::create(const std::string& folder, const std::string& shownFolder,
                                            std::string_view prefix) {
  Descriptor directory(uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!directory) return systemFailure(shownFolder, errno);
  std::string name = temporaryName(prefix);
  Descriptor file(uninterrupted([&] {
    return ::openat(directory.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  }));
  if (!file) return systemFailure(shownFolder + "/" + name, errno);
  return TemporaryFile(std::move(directory), std::move(file), std::move(name));
}

TemporaryFile::~TemporaryFile() {
  if (folder_ && !name_.empty()) ::unlinkat(folder_.get(), name_.c_str(), 0);
}

bool TemporaryFile::renameTo(const std::string& name) {
  if (::renameat(folder_.get(), name_.c_str(), folder_.get(), name.c_str()) != 0) return false;
  name_.clear();
  return true;
}

}  // namespace vorlu
