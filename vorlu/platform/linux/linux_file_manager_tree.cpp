#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "vorlu/platform/linux/linux_file_manager.h"
#include "vorlu/platform/linux/temporary_file.h"
#include "vorlu/platform/linux/tree_copy.h"

namespace vorlu {
namespace {

Status flushFolder(const Descriptor& folder, const std::string& shown) {
  return ::fsync(folder.get()) == 0 ? success() : systemFailure(shown, errno);
}

}  // namespace

Status LinuxFileManager::makeOneDirectory(const std::string& path, const Ownership& ownership) {
  const std::string host = root_.hostPath(path);
  if (::mkdir(host.c_str(), 0700) != 0) {
    const int error = errno;
    return error == EEXIST && isDirectory(path) ? success() : systemFailure(path, error);
  }
  const Descriptor folder(
      uninterrupted([&] { return ::open(host.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
  if (!folder) return systemFailure(path, errno);
  return give(folder.get(), path, ownership);
}

Status LinuxFileManager::createDirectory(const std::string& path, const Ownership& ownership) {
  if (isDirectory(path)) return success();
  const PathParts parts = splitPath(path);
  if (parts.name.empty()) return systemFailure(path, ENOENT);
  Status parents = createDirectory(parts.folder, {0755, ownership.owner, ownership.group});
  return parents ? makeOneDirectory(path, ownership) : parents;
}

Status LinuxFileManager::remove(const std::string& path) {
  const PathParts parts = splitPath(path);
  if (parts.name.empty() || parts.name == "." || parts.name == "..") return systemFailure(path, EPERM);
  const auto folder = openFolder(parts.folder);
  if (folder) return removeTree(folder->get(), parts.name, path);
  const int error = folder.failure().code;
  return error == ENOENT || error == ENOTDIR ? success() : Status(folder.failure());
}

Status LinuxFileManager::move(const std::string& from, const std::string& to) {
  if (::rename(root_.hostPath(from).c_str(), root_.hostPath(to).c_str()) == 0) return success();
  if (errno != EXDEV) return systemFailure(from + " to " + to, errno);
  Status copied = copyBeside(from, to, 0);
  return copied ? remove(from) : copied;
}

Status LinuxFileManager::copyTree(const std::string& from, const std::string& to) {
  if (info(to)) return systemFailure(to, EEXIST);
  return copyBeside(from, to, RENAME_NOREPLACE);
}

Status LinuxFileManager::copyBeside(const std::string& from, const std::string& to, unsigned renameFlags) {
  // A copy into its own source would never end.
  if (to.starts_with(from + "/")) return systemFailure(to, EINVAL);
  const PathParts source = splitPath(from);
  const PathParts target = splitPath(to);
  const auto fromFolder = openFolder(source.folder);
  if (!fromFolder) return fromFolder.failure();
  const auto toFolder = openFolder(target.folder);
  if (!toFolder) return toFolder.failure();
  const std::string unfinished = temporaryName(temporaryPrefix);
  Status copied = TreeCopy().copy(fromFolder->get(), source.name, toFolder->get(), unfinished, from);
  if (copied &&
      ::renameat2(toFolder->get(), unfinished.c_str(), toFolder->get(), target.name.c_str(), renameFlags) != 0)
    copied = systemFailure(to, errno);
  if (copied) return flushFolder(*toFolder, to);
  static_cast<void>(removeTree(toFolder->get(), unfinished, unfinished));
  return copied;
}

Status LinuxFileManager::exchange(const std::string& a, const std::string& b) {
  const std::string first = root_.hostPath(a);
  const std::string second = root_.hostPath(b);
  if (::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE) != 0)
    return systemFailure(a + " with " + b, errno);
  for (const std::string& path : {a, b}) {
    const std::string parent = splitPath(path).folder;
    const auto folder = openFolder(parent);
    if (!folder) return folder.failure();
    if (Status flushed = flushFolder(*folder, parent); !flushed) return flushed;
  }
  return success();
}

Status LinuxFileManager::syncTree(const std::string& path) {
  const std::string host = root_.hostPath(path);
  const Descriptor item(
      uninterrupted([&] { return ::open(host.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
  struct stat status {};
  if (!item || ::fstat(item.get(), &status) != 0) return systemFailure(path, errno);
  const int flushed = S_ISDIR(status.st_mode) ? ::syncfs(item.get()) : ::fsync(item.get());
  if (flushed != 0) return systemFailure(path, errno);
  const std::string parent = splitPath(path).folder;
  const auto folder = openFolder(parent);
  return folder ? flushFolder(*folder, parent) : Status(folder.failure());
}

}  // namespace vorlu
