#pragma once

#include <string>
#include <vector>

#include "vorlu/platform/device.h"
#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/processes.h"
#include "vorlu/state/log.h"

/// What the report tells of the computer itself, one question each. What can't be found out is "Unknown" or false.
namespace vorlu {

inline constexpr const char* unknownFact = "Unknown";

/// The system's own tools. Each is stopped after a minute; one that fails answers nothing, whatever it printed.
class SystemTools {
 public:
  SystemTools(Processes& processes, Log& log) : processes_(processes), log_(log) {}

  /// Standard output and error, untouched; empty after a failure.
  std::string output(const std::string& program, std::vector<std::string> arguments);
  /// A shell's line; it counts as failed, with no output, when it had to be stopped.
  ProcessResult shell(const std::string& line);

 private:
  ProcessResult run(Command command);

  Processes& processes_;
  Log& log_;
};

std::string computerName(Device& device);
/// The device's product description.
std::string modelNumber(Device& device);
/// The hardware profile's name of the model, for a device that has no description.
std::string modelName(SystemTools& tools);
/// Name of the chip, which Intel Macs don't have.
std::string architecture(SystemTools& tools);
bool isFileVaultEnabled(SystemTools& tools);
bool isGatekeeperEnabled(SystemTools& tools);
bool isSipEnabled(SystemTools& tools);

/// Size of the file system at "/", or its free space: whole gigabytes of 10^9 bytes, half a one rounded up, " GB".
std::string readDiskSpace(FileManager& files, bool capacity);

/// The full name of a user of this computer.
std::string readFullName(SystemTools& tools, const std::string& user);

}  // namespace vorlu
