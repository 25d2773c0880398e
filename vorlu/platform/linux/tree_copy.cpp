#include "vorlu/platform/linux/tree_copy.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <vector>

#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/linux/folder_entries.h"
#include "vorlu/platform/linux/temporary_file.h"

namespace vorlu {
namespace {

constexpr int openItem = O_NOFOLLOW | O_CLOEXEC;
constexpr std::size_t blockBytes = std::size_t{1} << 20;
/// Up to here each item is flushed on its own; beyond, one flush of the volume is cheaper.
constexpr int singleFlushes = 16;

bool copyByBlocks(int from, int to) {
  std::string block(blockBytes, '\0');
  while (true) {
    const ssize_t got = uninterrupted([&] { return ::read(from, block.data(), block.size()); });
    if (got <= 0) return got == 0;
    if (!writeAll(to, {block.data(), static_cast<std::size_t>(got)})) return false;
  }
}

/// The bytes of one file: shared where the volume can, copied inside the kernel where it can. False with errno set.
bool copyContent(int from, int to) {
  if (::ioctl(to, FICLONE, from) == 0) return true;
  bool any = false;
  while (true) {
    const ssize_t copied =
        uninterrupted([&] { return ::copy_file_range(from, nullptr, to, nullptr, std::size_t{1} << 30, 0); });
    if (copied == 0) return any || copyByBlocks(from, to);
    if (copied < 0)
      return !any && errno != ENOSPC && errno != EDQUOT && errno != EIO && errno != EFBIG && copyByBlocks(from, to);
    any = true;
  }
}

/// Attributes that the target's volume or the user's rights don't allow are left out.
void copyExtendedAttributes(int from, int to) {
  const ssize_t bytes = ::flistxattr(from, nullptr, 0);
  if (bytes <= 0) return;
  std::string names(static_cast<std::size_t>(bytes), '\0');
  const ssize_t listed = ::flistxattr(from, names.data(), names.size());
  if (listed <= 0) return;
  names.resize(static_cast<std::size_t>(listed));
  for (std::size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
    const char* name = names.data() + start;
    std::vector<char> value(XATTR_SIZE_MAX);
    const ssize_t size = ::fgetxattr(from, name, value.data(), value.size());
    if (size >= 0) ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0);
  }
}

std::array<timespec, 2> timesOf(const struct stat& status) {
  return {status.st_atim, status.st_mtim};
}

Status copyLink(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                const struct stat& status, const std::string& shown) {
  std::array<char, PATH_MAX> target{};
  const ssize_t size = ::readlinkat(fromFolder, fromName.c_str(), target.data(), target.size() - 1);
  if (size < 0 || ::symlinkat(target.data(), toFolder, toName.c_str()) != 0) return systemFailure(shown, errno);
  static_cast<void>(::fchownat(toFolder, toName.c_str(), status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW));
  ::utimensat(toFolder, toName.c_str(), timesOf(status).data(), AT_SYMLINK_NOFOLLOW);
  return success();
}

}  // namespace

Status TreeCopy::copy(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                      const std::string& shown) {
  if (Status copied = item(fromFolder, fromName, toFolder, toName, shown); !copied) return copied;
  if (wholeVolume_ && ::syncfs(toFolder) != 0) return systemFailure(shown, errno);
  return success();
}

Status TreeCopy::item(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                      const std::string& shown) {
  struct stat status {};
  if (::fstatat(fromFolder, fromName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return systemFailure(shown, errno);
  switch (status.st_mode & S_IFMT) {
    case S_IFREG:
      return file(fromFolder, fromName, toFolder, toName, shown);
    case S_IFDIR:
      return folder(fromFolder, fromName, toFolder, toName, shown);
    case S_IFLNK:
      return copyLink(fromFolder, fromName, toFolder, toName, status, shown);
    default:
      return Failure{fmt::format("{}: Not a file, folder or link", shown), EINVAL};
  }
}

Status TreeCopy::file(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                      const std::string& shown) {
  const Descriptor from(
      uninterrupted([&] { return ::openat(fromFolder, fromName.c_str(), O_RDONLY | O_NONBLOCK | openItem); }));
  struct stat status {};
  if (!from || ::fstat(from.get(), &status) != 0) return systemFailure(shown, errno);
  if (!S_ISREG(status.st_mode)) return systemFailure(shown, EINVAL);
  const Descriptor to(
      uninterrupted([&] { return ::openat(toFolder, toName.c_str(), O_WRONLY | O_CREAT | O_EXCL | openItem, 0600); }));
  if (!to || !copyContent(from.get(), to.get())) return systemFailure(shown, errno);
  return finish(from.get(), to.get(), status, shown);
}

Status TreeCopy::folder(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
                        const std::string& shown) {
  const Descriptor from(
      uninterrupted([&] { return ::openat(fromFolder, fromName.c_str(), O_RDONLY | O_DIRECTORY | openItem); }));
  struct stat status {};
  if (!from || ::fstat(from.get(), &status) != 0) return systemFailure(shown, errno);
  if (::mkdirat(toFolder, toName.c_str(), 0700) != 0) return systemFailure(shown, errno);
  const Descriptor to(
      uninterrupted([&] { return ::openat(toFolder, toName.c_str(), O_RDONLY | O_DIRECTORY | openItem); }));
  const auto entries = to ? folderEntries(from.get()) : std::nullopt;
  if (!entries) return systemFailure(shown, errno);
  for (const FolderEntry& entry : *entries) {
    Status copied = item(from.get(), entry.name, to.get(), entry.name, shown + "/" + entry.name);
    if (!copied) return copied;
  }
  return finish(from.get(), to.get(), status, shown);
}

Status TreeCopy::finish(int from, int to, const struct stat& status, const std::string& shown) {
  copyExtendedAttributes(from, to);
  static_cast<void>(::fchown(to, status.st_uid, status.st_gid));
  if (::fchmod(to, status.st_mode & 07777) != 0) return systemFailure(shown, errno);
  if (::futimens(to, timesOf(status).data()) != 0) return systemFailure(shown, errno);
  if (flushed_ == singleFlushes) {
    wholeVolume_ = true;
    return success();
  }
  ++flushed_;
  return ::fsync(to) == 0 ? success() : systemFailure(shown, errno);
}

namespace {

/// Folders held open at once while a tree is removed; a process has a few hundred descriptors.
constexpr int deepestRemoval = 32;
/// Each takes that many levels off the tree. Whoever goes on filling the folder must not hold the agent for ever.
constexpr int mostRemovals = 10'000;

Descriptor openInside(int folder, const std::string& name) {
  return Descriptor(uninterrupted([&] { return ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | openItem); }));
}

/// Removes an item of the tree whose root is open as `top`. A folder that lies too deep is taken up there.
Status removeItem(int top, int folder, const std::string& name, const std::string& shown, int depth) {
  if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT) return success();
  if (errno != EISDIR) return systemFailure(shown, errno);
  if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) return success();
  if (depth == deepestRemoval) {
    const std::string fresh = temporaryName(temporaryPrefix);
    return ::renameat(folder, name.c_str(), top, fresh.c_str()) == 0 ? success() : systemFailure(shown, errno);
  }
  {
    const Descriptor inner = openInside(folder, name);
    const auto entries = inner ? folderEntries(inner.get()) : std::nullopt;
    if (!entries) return systemFailure(shown, errno);
    for (const FolderEntry& entry : *entries)
      if (Status removed = removeItem(top, inner.get(), entry.name, shown + "/" + entry.name, depth + 1); !removed)
        return removed;
  }
  if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) return success();
  return systemFailure(shown, errno);
}

}  // namespace

Status removeTree(int folder, const std::string& name, const std::string& shown) {
  if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT) return success();
  if (errno != EISDIR) return systemFailure(shown, errno);
  const Descriptor top = openInside(folder, name);
  for (int removal = 0;; ++removal) {
    if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) return success();
    if (errno != ENOTEMPTY || removal == mostRemovals) return systemFailure(shown, errno);
    const auto entries = top ? folderEntries(top.get()) : std::nullopt;
    if (!entries) return systemFailure(shown, errno);
    for (const FolderEntry& entry : *entries)
      if (Status removed = removeItem(top.get(), top.get(), entry.name, shown + "/" + entry.name, 0); !removed)
        return removed;
  }
}

}  // namespace vorlu
