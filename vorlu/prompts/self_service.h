#pragma once

#include <optional>
#include <string>

namespace vorlu {

class FileManager;

/// Name of the Jamf Self Service application, as Jamf's preferences tell it; nothing without Jamf or such a name.
std::optional<std::string> selfServiceName(FileManager& files);

/// What a message says of updating at another time.
struct Advice {
  std::string manyApps;
  std::string oneApp;
  std::string brief;
};

/// The sentences for a computer with (or without) this Self Service application. A long name is told as "Self Service".
Advice adviceSentences(const std::optional<std::string>& selfService);

}  // namespace vorlu
