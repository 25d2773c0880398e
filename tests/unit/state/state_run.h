#pragma once

#include <string>
#include <vector>

#include "tests/support/test_platform.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu::test {

/// A run on a Mac of its own, with the site of this build. Another agent is found only when a test says so.
struct StateRun {
  StateRun() { mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"}); }

  std::vector<std::string> shown() { return mac.console.lines(); }
  std::string logFile() const { return mac.read("/private/var/log/Vorlu.log"); }
  /// The exit status with which `flow` ends the run, -1 when it returns.
  template <class Flow>
  int statusOf(Flow flow) {
    try {
      flow();
      return -1;
    } catch (const RunEnded& ended) {
      return ended.status;
    }
  }

  TestPlatform mac;
  Site site{sealedSite, mac.security};
  Vorlu vorlu{mac.platform(), site};
};

}  // namespace vorlu::test
