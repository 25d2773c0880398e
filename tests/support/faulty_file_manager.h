#pragma once

#include <atomic>
#include <cerrno>
#include <limits>
#include <string>
#include <vector>

#include "vorlu/platform/file_manager.h"

namespace vorlu::test {

/// Passes everything on to real files until a fault is set: then writing calls (writeAtomically, append,
/// createDirectory, move, copyTree, exchange, syncTree) are counted from 1, and the chosen ones fail untouched.
class FaultyFileManager : public FileManager {
 public:
  explicit FaultyFileManager(FileManager& real) : real_(real) {}

  /// Only the `number`th writing call from now fails.
  void failWrite(int number, int error = ENOSPC) { setFault(number, number, error); }
  /// That one and all after it fail: the disk stays full.
  void failWritesFrom(int number, int error = ENOSPC) { setFault(number, std::numeric_limits<int>::max(), error); }
  void heal() { setFault(0, 0, 0); }
  /// Writing calls since the last setting.
  int writes() const { return writes_; }

  bool exists(const std::string& path) override { return real_.exists(path); }
  bool isDirectory(const std::string& path) override { return real_.isDirectory(path); }
  std::optional<FileInfo> info(const std::string& path) override { return real_.info(path); }
  Result<std::string> read(const std::string& path, std::size_t cap = defaultReadCap) override {
    return real_.read(path, cap);
  }
  Result<std::vector<std::string>> list(const std::string& path) override { return real_.list(path); }
  Result<std::vector<TreeItem>> enumerate(const std::string& root) override { return real_.enumerate(root); }
  Result<std::string> linkTarget(const std::string& path) override { return real_.linkTarget(path); }
  Status remove(const std::string& path) override { return real_.remove(path); }
  Status setOwnership(const std::string& path, std::optional<mode_t> mode, const std::string& owner,
                      const std::string& group) override {
    return real_.setOwnership(path, mode, owner, group);
  }
  void setHidden(const std::string& path) override { real_.setHidden(path); }
  std::optional<std::int64_t> freeDiskSpace() override { return freeDisk ? freeDisk : real_.freeDiskSpace(); }
  Result<std::string> sha256(const std::string& path) override { return real_.sha256(path); }

  Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Status append(const std::string& path, std::string_view data, const Ownership& ownership) override;
  Status createDirectory(const std::string& path, const Ownership& ownership) override;
  Status move(const std::string& from, const std::string& to) override;
  Status copyTree(const std::string& from, const std::string& to) override;
  Status exchange(const std::string& a, const std::string& b) override;
  Status syncTree(const std::string& path) override;

  std::optional<std::int64_t> freeDisk;  ///< bytes; empty asks the real disk

 private:
  void setFault(int first, int last, int error);
  /// Counts a writing call; true when it is one that fails.
  bool fails();
  Failure failure(const std::string& path) const;

  FileManager& real_;
  std::atomic<int> writes_ = 0;
  int first_ = 0;
  int last_ = 0;
  int error_ = 0;
};

}  // namespace vorlu::test
