#pragma once

#include <mutex>

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/linux/descriptor.h"
#include "vorlu/platform/linux/linux_host.h"
#include "vorlu/platform/power.h"

namespace vorlu {

/// Assertions as files "{process id}-{assertion id}" holding the reason, in /private/var/run/vorlu-assertions. Each is
/// locked for as long as it is held, so one that a dead process left behind shows as released.
class LinuxPower : public Power {
 public:
  static constexpr const char* folder = "/private/var/run/vorlu-assertions";

  LinuxPower(RootFolder root, LinuxHost& host, FileManager& files)
      : root_(std::move(root)), host_(host), files_(files) {}
  ~LinuxPower() override;

  std::optional<std::uint32_t> createNoDisplaySleepAssertion(const std::string& reason) override;
  void releaseAssertion(std::uint32_t id) override;
  /// The host file's assertions and those held through this class, by whatever process.
  std::optional<std::map<int, std::vector<PowerAssertion>>> assertionsByProcess() override;

 private:
  bool isHeld(const std::string& path) const;

  RootFolder root_;
  LinuxHost& host_;
  FileManager& files_;
  std::mutex mutex_;
  std::uint32_t lastId_ = 0;
  std::map<std::uint32_t, Descriptor> held_;
};

}  // namespace vorlu
