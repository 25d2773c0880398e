#pragma once

#include <atomic>
#include <cerrno>
#include <limits>
#include <string>

#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/linux/linux_file_manager.h"

namespace vorlu::test {

/// Real files until a fault is set: then writing calls (writeAtomically, append, createDirectory, move, copyTree,
/// exchange, syncTree) are counted from 1, and the chosen ones fail untouched with a full disk.
class FaultyFileManager : public LinuxFileManager {
 public:
  using LinuxFileManager::LinuxFileManager;

  /// Only the `number`th writing call from now fails.
  void failWrite(int number) { writes_ = 0, first_ = last_ = number; }
  /// That one and all after it fail.
  void failWritesFrom(int number) { writes_ = 0, first_ = number, last_ = std::numeric_limits<int>::max(); }
  void heal() { first_ = last_ = 0; }

  Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) override {
    return fails() ? full(path) : LinuxFileManager::writeAtomically(path, data, ownership);
  }
  Status append(const std::string& path, std::string_view data, const Ownership& ownership) override {
    return fails() ? full(path) : LinuxFileManager::append(path, data, ownership);
  }
  Status createDirectory(const std::string& path, const Ownership& ownership) override {
    // It makes parents through itself; one that is there costs nothing.
    return !isDirectory(path) && fails() ? full(path) : LinuxFileManager::createDirectory(path, ownership);
  }
  Status move(const std::string& from, const std::string& to) override {
    return fails() ? full(to) : LinuxFileManager::move(from, to);
  }
  Status copyTree(const std::string& from, const std::string& to) override {
    return fails() ? full(to) : LinuxFileManager::copyTree(from, to);
  }
  Status exchange(const std::string& a, const std::string& b) override {
    return fails() ? full(a) : LinuxFileManager::exchange(a, b);
  }
  Status syncTree(const std::string& path) override { return fails() ? full(path) : LinuxFileManager::syncTree(path); }

  std::optional<std::int64_t> freeDiskSpace() override {
    return freeDisk ? freeDisk : LinuxFileManager::freeDiskSpace();
  }

  std::optional<std::int64_t> freeDisk;  ///< bytes; empty asks the real disk

 private:
  /// Counts a writing call; true when it is one that fails.
  bool fails() { return ++writes_ >= first_ && writes_ <= last_; }
  static Failure full(const std::string& path) { return systemFailure(path, ENOSPC); }

  std::atomic<int> writes_ = 0;
  int first_ = 0;
  int last_ = 0;
};

}  // namespace vorlu::test
