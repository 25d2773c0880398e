#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/linux/accounts.h"
#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/linux/root_folder.h"

namespace vorlu {

class LinuxHost;

/// Files below a root folder. Failures show the agent's paths, not the machine's.
class LinuxFileManager : public FileManager {
 public:
  LinuxFileManager(RootFolder root, LinuxHost& host) : root_(std::move(root)), host_(host) {}

  bool exists(const std::string& path) override;
  bool isDirectory(const std::string& path) override;
  std::optional<FileInfo> info(const std::string& path) override;
  Result<std::vector<std::string>> list(const std::string& path) override;
  Result<std::vector<TreeItem>> enumerate(const std::string& root) override;
  Result<std::string> linkTarget(const std::string& path) override;
  Status setOwnership(const std::string& path, std::optional<mode_t> mode, const std::string& owner,
                      const std::string& group) override;
  Status dropGrants(const std::string& path) override;
  void setHidden(const std::string& path) override;
  std::optional<std::int64_t> freeDiskSpace() override;
  std::optional<std::int64_t> diskCapacity() override;

  Result<std::string> read(const std::string& path, std::size_t cap = defaultReadCap) override;
  Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Status append(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Result<std::string> sha256(const std::string& path) override;

  Status createDirectory(const std::string& path, const Ownership& ownership) override;
  Status remove(const std::string& path) override;
  Status move(const std::string& from, const std::string& to) override;
  Status copyTree(const std::string& from, const std::string& to) override;
  Status exchange(const std::string& a, const std::string& b) override;
  Status syncTree(const std::string& path) override;

 private:
  struct OpenFile {
    Descriptor descriptor;
    struct stat status {};
  };

  Result<OpenFile> openRegular(const std::string& path, int flags, mode_t mode = 0) const;
  Result<OpenFile> openForAppend(const std::string& path, const Ownership& ownership);
  Result<Descriptor> openFolder(const std::string& path) const;
  /// Owner and mode of an open file; the mode comes last since a change of owner clears parts of it.
  Status give(int descriptor, const std::string& path, const Ownership& ownership);
  Status makeOneDirectory(const std::string& path, const Ownership& ownership);
  /// Copies under a hidden name beside `to` and renames when all is on the disk, with renameat2's flags.
  Status copyBeside(const std::string& from, const std::string& to, unsigned renameFlags);

  RootFolder root_;
  LinuxHost& host_;
  Accounts accounts_;
};

}  // namespace vorlu
