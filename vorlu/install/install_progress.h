#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorlu {

/// Values of the install pipeline that its callers and the prompts share.
struct InstallProgress {
  int installProgress = 0;     ///< value of the progress bar; callers reset it
  bool installFailed = false;  ///< set by every failure that doesn't end the process
  bool appInUseSeen = false;   ///< an application in use was skipped
  std::string mountPoint;      ///< the last attached volume
  std::string convertedImagePath;
  std::vector<std::string> appBinaries;
  std::vector<std::string> processWatchList;
  std::string foundProcess;
  bool downloadFinished = false;
  bool downloadFailed = false;
  std::string cancelText;  ///< why the last install was cancelled, in words for the user
  std::optional<std::uint32_t> sleepAssertion;
};

}  // namespace vorlu
