#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/install/serial_queue.h"

namespace vorlu {

/// Values of the install pipeline that its callers and the prompts share. While a ticker runs, the progress bar belongs
/// to the ticker's thread and everything else to the work's; the flow waits for both.
struct InstallProgress {
  std::atomic<int> installProgress = 0;  ///< value of the progress bar; callers reset it
  bool installFailed = false;            ///< set by every failure that doesn't end the process
  bool appInUseSeen = false;             ///< an application in use was skipped
  std::string mountPoint;                ///< the last attached volume
  std::string convertedImagePath;        ///< the last image that was freed of its licence
  std::vector<std::string> appBinaries;
  std::vector<std::string> processWatchList;
  std::string foundProcess;
  std::atomic<bool> downloadFinished = false;
  std::atomic<bool> downloadFailed = false;
  std::optional<int> networkSpeed;            ///< megabits per second, once asked
  std::string cancelText;                     ///< why the last install was cancelled, in words for the user
  std::string appIcon;                        ///< icon of the install window
  std::optional<std::string> promptPosition;  ///< of the install's window and prompts, once asked
  std::optional<std::string> overlayIcon;     ///< the same
  std::optional<std::uint32_t> sleepAssertion;
  SerialQueue workQueue;    ///< downloads, mounts, extractions and copies beside a progress window
  SerialQueue tickerQueue;  ///< what moves the bar meanwhile
};

}  // namespace vorlu
