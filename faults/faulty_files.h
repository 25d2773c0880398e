#pragma once

#include <string>
#include <type_traits>

#include "faults/fault_plan.h"
#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/linux/descriptor.h"

namespace vorlu::faults {

/// Files whose calls meet the plan's fault and are then left undone; a short append leaves its first half.
class FaultyFiles : public FileManager {
 public:
  FaultyFiles(FileManager& files, FaultPlan& plan) : files_(files), plan_(plan) {}

  bool exists(const std::string& path) override { return pass(Touch::look, path, &FileManager::exists, path); }
  bool isDirectory(const std::string& path) override {
    return pass(Touch::look, path, &FileManager::isDirectory, path);
  }
  std::optional<FileInfo> info(const std::string& path) override {
    return pass(Touch::look, path, &FileManager::info, path);
  }
  Result<std::string> read(const std::string& path, std::size_t cap) override {
    return pass(Touch::read, path, &FileManager::read, path, cap);
  }
  Status writeAtomically(const std::string& path, std::string_view data, const Ownership& ownership) override {
    return pass(Touch::write, path, &FileManager::writeAtomically, path, data, ownership);
  }
  Status append(const std::string& path, std::string_view data, const Ownership& ownership) override {
    return plan_.through(
        Touch::write, "append " + path, [&] { return files_.append(path, data, ownership); },
        [&](int error) {
          if (error == ENOSPC) static_cast<void>(files_.append(path, data.substr(0, data.size() / 2), ownership));
          return Status(systemFailure(path, error));
        });
  }
  Result<std::vector<std::string>> list(const std::string& path) override {
    return pass(Touch::read, path, &FileManager::list, path);
  }
  Result<std::vector<TreeItem>> enumerate(const std::string& root) override {
    return pass(Touch::read, root, &FileManager::enumerate, root);
  }
  Result<std::string> linkTarget(const std::string& path) override {
    return pass(Touch::look, path, &FileManager::linkTarget, path);
  }
  Status createDirectory(const std::string& path, const Ownership& ownership) override {
    if (files_.isDirectory(path)) return success();
    return pass(Touch::write, path, &FileManager::createDirectory, path, ownership);
  }
  Status remove(const std::string& path) override { return pass(Touch::change, path, &FileManager::remove, path); }
  Status move(const std::string& from, const std::string& to) override {
    return pass(Touch::write, from + " to " + to, &FileManager::move, from, to);
  }
  Status copyTree(const std::string& from, const std::string& to) override {
    return pass(Touch::write, from + " to " + to, &FileManager::copyTree, from, to);
  }
  Status exchange(const std::string& a, const std::string& b) override {
    return pass(Touch::write, a + " with " + b, &FileManager::exchange, a, b);
  }
  Status syncTree(const std::string& path) override { return pass(Touch::write, path, &FileManager::syncTree, path); }
  Status setOwnership(const std::string& path, std::optional<mode_t> mode, const std::string& owner,
                      const std::string& group) override {
    return pass(Touch::change, path, &FileManager::setOwnership, path, mode, owner, group);
  }
  Status dropGrants(const std::string& path) override {
    return pass(Touch::change, path, &FileManager::dropGrants, path);
  }
  void setHidden(const std::string& path) override { files_.setHidden(path); }
  std::optional<std::int64_t> freeDiskSpace() override { return pass(Touch::look, "/", &FileManager::freeDiskSpace); }
  std::optional<std::int64_t> diskCapacity() override { return pass(Touch::look, "/", &FileManager::diskCapacity); }
  Result<std::string> sha256(const std::string& path) override {
    return pass(Touch::read, path, &FileManager::sha256, path);
  }

 private:
  template <class Answer, class... Wanted, class... Given>
  Answer pass(Touch touch, const std::string& path, Answer (FileManager::*call)(Wanted...), Given&&... given) {
    static constexpr const char* names[] = {"looking at ", "reading ", "writing ", "changing "};
    return plan_.through(
        touch, names[static_cast<int>(touch)] + path, [&] { return (files_.*call)(given...); },
        [&](int error) -> Answer {
          if constexpr (std::is_constructible_v<Answer, Failure>)
            return systemFailure(path, error);
          else
            return Answer{};
        });
  }

  FileManager& files_;
  FaultPlan& plan_;
};

}  // namespace vorlu::faults
