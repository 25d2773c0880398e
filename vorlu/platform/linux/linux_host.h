#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/platform/cameras.h"
#include "vorlu/platform/linux/root_folder.h"
#include "vorlu/platform/power.h"

namespace vorlu {

/// The Mac's time as a straight line over real time: `mac + (real time - real) * rate`, all in seconds.
struct HostClock {
  double real = 0;
  double mac = 0;
  double rate = 1;  ///< above 0
};

/// What the simulated Mac says of itself. A key that is missing, or of a wrong type, stays empty.
struct HostFacts {
  std::optional<std::string> consoleUser;
  std::optional<uid_t> consoleUid;
  std::optional<int> cpuType;
  std::optional<std::string> osVersion;
  std::optional<std::string> serialNumber;
  std::optional<std::string> computerName;
  std::optional<std::string> productDescription;
  std::optional<std::int64_t> freeDiskBytes;
  std::optional<std::int64_t> diskBytes;
  std::vector<std::string> activeApplications;
  std::optional<std::map<int, std::vector<PowerAssertion>>> powerAssertions;
  std::vector<Camera> cameras;
  std::optional<bool> screenShared;
  std::optional<HostClock> clock;
};

/// The host file. Each question looks at the file; its text is read again only when the file has changed. A missing or
/// broken file is a Mac that can't answer anything.
class LinuxHost {
 public:
  static constexpr const char* path = "/private/var/db/vorlu-host.json";

  explicit LinuxHost(RootFolder root) : root_(std::move(root)) {}

  std::shared_ptr<const HostFacts> facts();

 private:
  struct Version {
    std::uint64_t inode = 0;
    std::int64_t size = -1;
    std::int64_t modified = 0;  ///< nanoseconds
    bool operator==(const Version&) const = default;
  };

  RootFolder root_;
  std::mutex mutex_;
  Version version_;
  std::shared_ptr<const HostFacts> facts_ = std::make_shared<HostFacts>();
};

}  // namespace vorlu
