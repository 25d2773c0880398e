#include "vorlu/platform/linux/linux_file_manager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "vorlu/platform/linux/folder_entries.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu {
namespace {

constexpr std::array<std::string_view, 16> packageEndings = {
    ".app",         ".bundle", ".framework", ".pkg",        ".mpkg",      ".plugin", ".kext", ".prefpane",
    ".qlgenerator", ".xpc",    ".appex",     ".mdimporter", ".component", ".saver",  ".dext", ".systemextension"};

bool isPackageName(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::any_of(packageEndings.begin(), packageEndings.end(),
                     [&](std::string_view ending) { return name.size() > ending.size() && name.ends_with(ending); });
}

/// Adds what lies in `folder` below the open root. A folder that can't be read is left out with its inside.
void addFolder(int root, const std::string& folder, std::vector<TreeItem>& items) {
  const Descriptor open(
      uninterrupted([&] { return ::openat(root, folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
  auto entries = open ? folderEntries(open.get()) : std::nullopt;
  if (!entries) return;
  for (FolderEntry& entry : *entries) {
    const bool package = entry.kind == FileKind::directory && isPackageName(entry.name);
    const std::string path = folder == "." ? entry.name : folder + "/" + entry.name;
    items.push_back({path, entry.kind, package});
    if (entry.kind == FileKind::directory && !package) addFolder(root, path, items);
  }
}

}  // namespace

bool LinuxFileManager::exists(const std::string& path) {
  struct stat status {};
  return ::stat(root_.hostPath(path).c_str(), &status) == 0;
}

bool LinuxFileManager::isDirectory(const std::string& path) {
  struct stat status {};
  return ::stat(root_.hostPath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<std::string> LinuxFileManager::linkTarget(const std::string& path) {
  std::array<char, 4096> target{};  // longer ones can't be made
  const ssize_t length = ::readlink(root_.hostPath(path).c_str(), target.data(), target.size());
  if (length < 0) return systemFailure(path, errno);
  return std::string(target.data(), static_cast<std::size_t>(length));
}

std::optional<FileInfo> LinuxFileManager::info(const std::string& path) {
  struct stat status {};
  if (::lstat(root_.hostPath(path).c_str(), &status) != 0) return std::nullopt;
  return accounts_.describe(status);
}

Result<Descriptor> LinuxFileManager::openFolder(const std::string& path) const {
  const std::string host = root_.hostPath(path);
  Descriptor folder(uninterrupted([&] { return ::open(host.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder) return systemFailure(path, errno);
  return folder;
}

Result<std::vector<std::string>> LinuxFileManager::list(const std::string& path) {
  const auto folder = openFolder(path);
  if (!folder) return folder.failure();
  auto entries = folderEntries(folder->get());
  if (!entries) return systemFailure(path, errno);
  std::vector<std::string> names;
  names.reserve(entries->size());
  for (FolderEntry& entry : *entries) names.push_back(std::move(entry.name));
  return names;
}

Result<std::vector<TreeItem>> LinuxFileManager::enumerate(const std::string& root) {
  const auto folder = openFolder(root);
  if (!folder) return folder.failure();
  std::vector<TreeItem> items;
  addFolder(folder->get(), ".", items);
  return items;
}

Status LinuxFileManager::setOwnership(const std::string& path, std::optional<mode_t> mode, const std::string& owner,
                                      const std::string& group) {
  const std::string host = root_.hostPath(path);
  if (const int error = accounts_.giveAt(AT_FDCWD, host.c_str(), owner, group, AT_SYMLINK_NOFOLLOW))
    return systemFailure(path, error);
  // A link has no mode of its own here.
  if (mode && ::fchmodat(AT_FDCWD, host.c_str(), *mode, AT_SYMLINK_NOFOLLOW) != 0 && errno != EOPNOTSUPP)
    return systemFailure(path, errno);
  return success();
}

namespace {

constexpr const char* accessList = "system.posix_acl_access";

/// What an access list leaves of the mode: the group's own rights, in whose place the mode shows the list's mask.
mode_t modeBehindList(const std::string& host) {
  constexpr std::size_t header = 4, entry = 8;  // an entry is a tag and rights, 16 bits each, and an id
  constexpr unsigned char group = 4;
  std::array<unsigned char, 4096> list{};
  const ssize_t size = ::lgetxattr(host.c_str(), accessList, list.data(), list.size());
  if (size < 0 && errno != ERANGE) return 07777;
  mode_t mode = 07707;
  for (std::size_t at = header; size > 0 && at + entry <= static_cast<std::size_t>(size); at += entry)
    if (list.at(at) == group) mode |= static_cast<mode_t>(list.at(at + 2) & 7) << 3;
  return mode;
}

}  // namespace

Status LinuxFileManager::dropGrants(const std::string& path) {
  const std::string host = root_.hostPath(path);
  struct stat status {};
  if (::lstat(host.c_str(), &status) != 0) return systemFailure(path, errno);
  if (S_ISLNK(status.st_mode)) return success();
  mode_t mode = status.st_mode & (S_ISDIR(status.st_mode) ? 03777 : 01777);
  if (::llistxattr(host.c_str(), nullptr, 0) > 0) {
    mode &= modeBehindList(host);
    for (const char* name : {accessList, "system.posix_acl_default", "security.capability"})
      if (::lremovexattr(host.c_str(), name) != 0 && errno != ENODATA && errno != EOPNOTSUPP)
        return systemFailure(path, errno);
  }
  if (mode == (status.st_mode & 07777)) return success();
  return ::chmod(host.c_str(), mode) == 0 ? success() : systemFailure(path, errno);
}

void LinuxFileManager::setHidden(const std::string& path) {
  ::lsetxattr(root_.hostPath(path).c_str(), "user.vorlu.hidden", "1", 1, 0);
}

std::optional<std::int64_t> LinuxFileManager::freeDiskSpace() {
  if (const auto bytes = host_.facts()->freeDiskBytes) return bytes;
  struct statvfs volume {};
  if (::statvfs(root_.hostPath("/").c_str(), &volume) != 0) return std::nullopt;
  return static_cast<std::int64_t>(volume.f_bavail) * static_cast<std::int64_t>(volume.f_frsize);
}

std::optional<std::int64_t> LinuxFileManager::diskCapacity() {
  if (const auto bytes = host_.facts()->diskBytes) return bytes;
  struct statvfs volume {};
  if (::statvfs(root_.hostPath("/").c_str(), &volume) != 0) return std::nullopt;
  return static_cast<std::int64_t>(volume.f_blocks) * static_cast<std::int64_t>(volume.f_frsize);
}

}  // namespace vorlu
