#pragma once

#include <map>
#include <stdexcept>
#include <string>

#include "vorlu/platform/file_manager.h"

namespace vorlu::ctl {

/// Something was about to be changed by one who only looks.
class ChangeRefused : public std::logic_error {
 public:
  explicit ChangeRefused(const std::string& path) : std::logic_error(path + ": it would be changed by a mere look") {}
};

/// Another's files, to be read alone. Lines of the agent's log are dropped. Run data that would be stored is kept in
/// memory, so that what is read after it is what the agent would read. Any other change throws `ChangeRefused`.
class ReadOnlyFiles : public FileManager {
 public:
  explicit ReadOnlyFiles(FileManager& files) : files_(files) {}

  bool exists(const std::string& path) override { return kept_.contains(path) || files_.exists(path); }
  bool isDirectory(const std::string& path) override { return files_.isDirectory(path); }
  std::optional<FileInfo> info(const std::string& path) override { return files_.info(path); }
  Result<std::string> read(const std::string& path, std::size_t cap = defaultReadCap) override;
  Result<std::vector<std::string>> list(const std::string& path) override { return files_.list(path); }
  Result<std::vector<TreeItem>> enumerate(const std::string& root) override { return files_.enumerate(root); }
  Result<std::string> linkTarget(const std::string& path) override { return files_.linkTarget(path); }
  std::optional<std::int64_t> freeDiskSpace() override { return files_.freeDiskSpace(); }
  std::optional<std::int64_t> diskCapacity() override { return files_.diskCapacity(); }
  Result<std::string> sha256(const std::string& path) override { return files_.sha256(path); }

  Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Status append(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Status createDirectory(const std::string& path, const Ownership& ownership) override;
  Status remove(const std::string& path) override { throw ChangeRefused(path); }
  Status move(const std::string& from, const std::string& /*to*/) override { throw ChangeRefused(from); }
  Status copyTree(const std::string& /*from*/, const std::string& to) override { throw ChangeRefused(to); }
  Status exchange(const std::string& a, const std::string& /*b*/) override { throw ChangeRefused(a); }
  Status syncTree(const std::string& path) override { throw ChangeRefused(path); }
  Status setOwnership(const std::string& path, std::optional<mode_t> /*mode*/, const std::string& /*owner*/,
                      const std::string& /*group*/) override {
    throw ChangeRefused(path);
  }
  Status dropGrants(const std::string& path) override { throw ChangeRefused(path); }
  void setHidden(const std::string& path) override;

 private:
  FileManager& files_;
  std::map<std::string, std::string> kept_;
};

}  // namespace vorlu::ctl
