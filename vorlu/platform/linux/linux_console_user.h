#pragma once

#include "vorlu/platform/console_user.h"
#include "vorlu/platform/linux/linux_host.h"

namespace vorlu {

/// The host file's console user.
class LinuxConsoleUser : public ConsoleUser {
 public:
  explicit LinuxConsoleUser(LinuxHost& host) : host_(host) {}

  std::string name() override { return host_.facts()->consoleUser.value_or("Unknown"); }
  uid_t uid() override { return host_.facts()->consoleUid.value_or(0); }

 private:
  LinuxHost& host_;
};

}  // namespace vorlu
