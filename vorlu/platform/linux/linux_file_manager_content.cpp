#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "vorlu/platform/linux/linux_file_manager.h"
#include "vorlu/platform/linux/sha256_digest.h"
#include "vorlu/platform/linux/temporary_file.h"

namespace vorlu {
namespace {

constexpr std::size_t spareBytes = 64;
constexpr std::size_t blockBytes = std::size_t{1} << 20;

}  // namespace

Result<LinuxFileManager::OpenFile> LinuxFileManager::openRegular(const std::string& path, int flags,
                                                                 mode_t mode) const {
  const std::string host = root_.hostPath(path);
  OpenFile file;
  // O_NONBLOCK: opening a pipe that someone put here must not wait for its other end.
  file.descriptor = Descriptor(uninterrupted(
      [&] { return ::open(host.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, mode); }));
  if (!file.descriptor || ::fstat(file.descriptor.get(), &file.status) != 0) return systemFailure(path, errno);
  if (S_ISDIR(file.status.st_mode)) return systemFailure(path, EISDIR);
  if (!S_ISREG(file.status.st_mode)) return Failure{fmt::format("{}: Not a regular file", path), EINVAL};
  return file;
}

Status LinuxFileManager::give(int descriptor, const std::string& path, const Ownership& ownership) {
  if (const int error = accounts_.giveAt(descriptor, "", ownership.owner, ownership.group, AT_EMPTY_PATH))
    return systemFailure(path, error);
  if (::fchmod(descriptor, ownership.mode) != 0) return systemFailure(path, errno);
  return success();
}

Result<std::string> LinuxFileManager::read(const std::string& path, std::size_t cap) {
  const auto file = openRegular(path, O_RDONLY);
  if (!file) return file.failure();
  const auto announced = static_cast<std::size_t>(file->status.st_size);
  if (announced > cap) return systemFailure(path, EFBIG);
  std::string text;
  text.resize(announced + spareBytes);
  std::size_t filled = 0;
  // The file may have grown or shrunk since it was measured, so the end is what read() says it is: nothing more, or less
  // than there is room for once all that was announced is here. A size of 0 announces nothing.
  for (bool ended = false; !ended;) {
    if (filled == text.size()) text.resize(filled + blockBytes);
    const std::size_t room = text.size() - filled;
    const ssize_t got = uninterrupted([&] { return ::read(file->descriptor.get(), text.data() + filled, room); });
    if (got < 0) return systemFailure(path, errno);
    filled += static_cast<std::size_t>(got);
    if (filled > cap) return systemFailure(path, EFBIG);
    ended = got == 0 || (announced > 0 && filled >= announced && static_cast<std::size_t>(got) < room);
  }
  text.resize(filled);
  text.reserve(filled + spareBytes);
  return text;
}

Status LinuxFileManager::writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) {
  const PathParts parts = splitPath(path);
  auto temporary = TemporaryFile::create(root_.hostPath(parts.folder), parts.folder, temporaryPrefix);
  if (!temporary) return Failure{temporary.error(), temporary.failure().code};
  if (!writeAll(temporary->descriptor(), data)) return systemFailure(path, errno);
  if (Status given = give(temporary->descriptor(), path, ownership); !given) return given;
  if (::fsync(temporary->descriptor()) != 0) return systemFailure(path, errno);
  if (!temporary->renameTo(parts.name)) return systemFailure(path, errno);
  return success();
}

Result<LinuxFileManager::OpenFile> LinuxFileManager::openForAppend(const std::string& path,
                                                                   const Ownership& ownership) {
  auto present = openRegular(path, O_WRONLY | O_APPEND);
  if (present || present.failure().code != ENOENT) return present;
  auto made = openRegular(path, O_WRONLY | O_APPEND | O_CREAT | O_EXCL, 0600);
  if (!made && made.failure().code == EEXIST) return openRegular(path, O_WRONLY | O_APPEND);
  if (!made) return made;
  if (const Status given = give(made->descriptor.get(), path, ownership); !given) return given.failure();
  return made;
}

Status LinuxFileManager::append(const std::string& path, std::string_view data, const Ownership& ownership) {
  const auto file = openForAppend(path, ownership);
  if (!file) return file.failure();
  if (!writeAll(file->descriptor.get(), data)) return systemFailure(path, errno);
  return success();
}

Result<std::string> LinuxFileManager::sha256(const std::string& path) {
  const auto file = openRegular(path, O_RDONLY);
  if (!file) return file.failure();
  ::posix_fadvise(file->descriptor.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  Sha256Digest digest;
  std::string block(blockBytes, '\0');
  while (true) {
    const ssize_t got = uninterrupted([&] { return ::read(file->descriptor.get(), block.data(), block.size()); });
    if (got < 0) return systemFailure(path, errno);
    if (got == 0) return digest.finishHex();
    digest.update({block.data(), static_cast<std::size_t>(got)});
  }
}

}  // namespace vorlu
