#pragma once

#include <fmt/format.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include "tests/support/fault_plan.h"
#include "tests/support/scripted_processes.h"
#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/platform.h"

namespace vorlu::test {

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
  void setHidden(const std::string& path) override { files_.setHidden(path); }
  std::optional<std::int64_t> freeDiskSpace() override {
    return pass(Touch::look, "/", &FileManager::freeDiskSpace);
  }
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

/// Children that can't be started for want of descriptors, are killed when interrupted, and fail otherwise.
class FaultyProcesses : public Processes {
 public:
  FaultyProcesses(Processes& processes, FaultPlan& plan) : processes_(processes), plan_(plan) {}

  ProcessResult run(const Command& command) override {
    return plan_.through(
        Touch::child, commandLine(command), [&] { return processes_.run(command); },
        [&](int error) {
          ProcessResult result;
          result.started = error != EMFILE;
          if (error == EMFILE) result.error = systemFailure(command.program, error).text;
          error == EINTR ? result.signal = SIGKILL : result.status = 1;
          return result;
        });
  }
  std::unique_ptr<RunningProcess> start(const Command& command) override {
    struct Ended : RunningProcess {
      ProcessResult result;
      bool isRunning() override { return false; }
      ProcessResult wait() override { return result; }
    };
    auto process = std::make_unique<Ended>();
    process->result = run(command);
    return process;
  }
  std::optional<pid_t> launch(const Command& command) override {
    return plan_.through(
        Touch::child, commandLine(command) + " &", [&] { return processes_.launch(command); },
        [](int) { return std::optional<pid_t>(); });
  }
  bool signal(pid_t pid, int signal) override { return processes_.signal(pid, signal); }
  bool isAlive(pid_t pid) override { return processes_.isAlive(pid); }
  pid_t ownPid() override { return processes_.ownPid(); }
  pid_t parentPid() override { return processes_.parentPid(); }
  std::string userName() override { return processes_.userName(); }

 private:
  Processes& processes_;
  FaultPlan& plan_;
};

/// Transfers that end with an error before anything has come.
class FaultyUrls : public UrlSession {
 public:
  FaultyUrls(UrlSession& urls, FaultPlan& plan) : urls_(urls), plan_(plan) {}

  UrlReply send(const UrlRequest& request) override {
    return plan_.through(Touch::network, request.url, [&] { return urls_.send(request); }, failed<UrlReply>);
  }
  DownloadReply download(const UrlRequest& request, const std::string& folder) override {
    return plan_.through(
        Touch::download, request.url, [&] { return urls_.download(request, folder); }, failed<DownloadReply>);
  }

 private:
  template <class Reply>
  static Reply failed(int error) {
    Reply reply;
    reply.error = std::strerror(error);
    return reply;
  }

  UrlSession& urls_;
  FaultPlan& plan_;
};

/// The same Mac with other files, children, transfers and keychain.
inline Platform faultyPlatform(const Platform& mac, FileManager& files, Processes& processes, UrlSession& urls,
                               Keychain& keychain) {
  return {mac.clock, files,       processes, urls,             mac.security,  keychain,    mac.consoleUser, mac.device,
          mac.power, mac.cameras, mac.focus, mac.applications, mac.systemLog, mac.console, mac.webView};
}

}  // namespace vorlu::test
