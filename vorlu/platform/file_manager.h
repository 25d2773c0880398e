#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorlu/platform/result.h"

namespace vorlu {

/// What the hidden names of unfinished files and trees begin with.
inline constexpr std::string_view temporaryPrefix = ".vorlu-";

/// Mode, owner and group given to something that is made. An owner or group that the machine lacks, or may not set, is
/// skipped without an error on Linux. An empty name leaves the owner or group alone.
struct Ownership {
  mode_t mode = 0644;
  std::string owner;
  std::string group;
};

enum class FileKind { regular, directory, link, other };

/// What tells one state of a file from another; `kind` is the item's own, links aren't followed.
struct FileInfo {
  FileKind kind = FileKind::other;
  std::uint64_t size = 0;  ///< bytes
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t modified = 0;  ///< nanoseconds since the epoch
  mode_t mode = 0;            ///< permission bits
  std::string owner;          ///< user name, or the number as text
  std::string group;
  bool operator==(const FileInfo&) const = default;
};

/// One item of an enumerated tree: its path below the root and whether it is an application bundle.
struct TreeItem {
  std::string relativePath;
  FileKind kind = FileKind::other;
  bool package = false;  ///< a bundle directory (".app", ".pkg", ".framework", …) whose inside isn't entered
};

/// Files of the Mac. Stands for NSFileManager, NSData reading and writing, and resource values. Paths are absolute.
class FileManager {
 public:
  virtual ~FileManager() = default;

  static constexpr std::size_t defaultReadCap = std::size_t{256} << 20;

  /// fileExistsAtPath: file or directory, links followed.
  virtual bool exists(const std::string& path) = 0;
  /// Exists and is a directory, links followed.
  virtual bool isDirectory(const std::string& path) = 0;
  /// attributesOfItemAtPath; nothing when there is no such item.
  virtual std::optional<FileInfo> info(const std::string& path) = 0;

  /// Reads a regular file whole; refuses links, pipes, directories and files above `cap` bytes. The string's capacity
  /// leaves 64 spare bytes behind its end, which fast parsers need.
  virtual Result<std::string> read(const std::string& path, std::size_t cap = defaultReadCap) = 0;
  /// Unique temporary file in the same folder, fsync, rename: a reader sees the old content or the new, never less. The
  /// mode and owner are set before the file gets its name.
  virtual Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) = 0;
  /// One write at the end of a regular file, made with `ownership` when missing. Links and pipes are refused.
  virtual Status append(const std::string& path, std::string_view data, const Ownership& ownership) = 0;

  /// contentsOfDirectoryAtPath: names without "." and "..", in byte order.
  virtual Result<std::vector<std::string>> list(const std::string& path) = 0;
  /// NSDirectoryEnumerator with the skip-package-descendants option, parents before children, names in byte order.
  /// Links aren't followed.
  virtual Result<std::vector<TreeItem>> enumerate(const std::string& root) = 0;

  /// destinationOfSymbolicLinkAtPath: what a link says, not where it leads.
  virtual Result<std::string> linkTarget(const std::string& path) = 0;

  /// Creates the directory and its missing parents; the parents get mode 0755 and the same owner. An existing directory
  /// is left as it is.
  virtual Status createDirectory(const std::string& path, const Ownership& ownership) = 0;
  /// removeItemAtPath: a file, a link itself or a whole tree. No such item is success.
  virtual Status remove(const std::string& path) = 0;
  /// moveItemAtPath: rename, across volumes copy, sync and remove. An existing target file is replaced.
  virtual Status move(const std::string& from, const std::string& to) = 0;
  /// copyItemAtPath: a file or tree with its links, modes, times and extended attributes, synced to the disk. Fails
  /// when the target exists; a failed copy leaves no part of the target behind.
  virtual Status copyTree(const std::string& from, const std::string& to) = 0;
  /// renamex_np with RENAME_SWAP: both names exist before and after, with their contents exchanged in one step.
  virtual Status exchange(const std::string& a, const std::string& b) = 0;
  /// Flushes a whole tree and its parent directory to the disk.
  virtual Status syncTree(const std::string& path) = 0;

  /// Sets owner, group and, when given, mode on one item without following links.
  virtual Status setOwnership(const std::string& path, std::optional<mode_t> mode, const std::string& owner,
                              const std::string& group) = 0;
  /// Takes from one item what gives others more than its owner, group and mode say: the set-user bit, a file's set-group
  /// bit, access control lists, capabilities. A link has none.
  virtual Status dropGrants(const std::string& path) = 0;
  /// NSURLIsHiddenKey; where the file system has no such attribute nothing happens.
  virtual void setHidden(const std::string& path) = 0;

  /// NSFileSystemFreeSize of "/", bytes; nothing on any failure.
  virtual std::optional<std::int64_t> freeDiskSpace() = 0;
  /// NSFileSystemSize of "/", bytes; nothing on any failure.
  virtual std::optional<std::int64_t> diskCapacity() = 0;
  /// SHA-256 of a regular file, read in blocks, as 64 lower-case hexadecimal digits.
  virtual Result<std::string> sha256(const std::string& path) = 0;
};

}  // namespace vorlu
