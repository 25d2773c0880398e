#pragma once

#include <fmt/format.h>

#include "tests/support/scripted_user.h"
#include "tests/unit/install/install_run.h"
#include "vorlu/state/receipts.h"

namespace vorlu::test {

/// A Mac whose user has applications open and is asked.
class PromptedRun : public InstallRun, protected ScriptedUser {
 protected:
  PromptedRun() : ScriptedUser(InstallRun::mac) { mac.makeFolder(paths::components); }
  using InstallRun::mac;
  using ScriptedUser::shown;

  /// An app in version 1.0, of which 2.0 is served, open or not.
  void addApp(const std::string& name, bool isOpen = true) {
    addToCatalog(name);
    install(name);
    if (isOpen) open(name);
  }
  static ApplicationInventory pending(const std::string& name) {
    ApplicationInventory record;
    record.appName = name;
    record.installedPath = pathOf(name);
    record.installedVersion = "1.0";
    return record;
  }
};

}  // namespace vorlu::test
