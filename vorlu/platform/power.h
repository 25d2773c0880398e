#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vorlu {

/// One assertion that a process holds.
struct PowerAssertion {
  std::string processName;
  std::string type;  ///< "AssertionTrueType", for example "NoDisplaySleepAssertion"
};

/// Stands for IOPMAssertionCreateWithName, IOPMAssertionRelease and IOPMCopyAssertionsByProcess.
class Power {
 public:
  virtual ~Power() = default;

  /// A display sleep assertion of level 255; its id, or nothing when the system refuses.
  virtual std::optional<std::uint32_t> createNoDisplaySleepAssertion(const std::string& reason) = 0;
  virtual void releaseAssertion(std::uint32_t id) = 0;
  /// By process id; nothing when the system can't answer.
  virtual std::optional<std::map<int, std::vector<PowerAssertion>>> assertionsByProcess() = 0;
};

}  // namespace vorlu
