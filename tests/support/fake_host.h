#pragma once

#include <fmt/format.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "vorlu/platform/cameras.h"
#include "vorlu/platform/console_user.h"
#include "vorlu/platform/device.h"
#include "vorlu/platform/focus_monitor.h"
#include "vorlu/platform/power.h"
#include "vorlu/platform/running_applications.h"

namespace vorlu::test {

// What the Mac answers; each value may be set at any time, from a clock's event too.

struct FakeConsoleUser : ConsoleUser {
  std::string user = "alice";
  std::string name() override { return user; }
  uid_t uid() override { return 501; }
};

struct FakeDevice : Device {
  std::optional<int> cpu = 12;
  std::string system = "14.5.0";
  std::optional<std::string> serial = "C02SIM00001";
  std::optional<int> cpuType() override { return cpu; }
  std::string osVersion() override { return system; }
  std::optional<std::string> serialNumber() override { return serial; }
  std::string name = "Sim Mac";
  std::optional<std::string> product;
  std::string computerName() override { return name; }
  std::optional<std::string> productDescription() override { return product; }
};

struct FakePower : Power {
  std::set<std::uint32_t> held;
  std::vector<std::string> calls;  ///< "create {reason}" and "release {id}"
  std::optional<std::map<int, std::vector<PowerAssertion>>> assertions = std::map<int, std::vector<PowerAssertion>>{};
  std::uint32_t lastId = 0;

  std::optional<std::uint32_t> createNoDisplaySleepAssertion(const std::string& reason) override {
    calls.push_back("create " + reason);
    held.insert(++lastId);
    return lastId;
  }
  void releaseAssertion(std::uint32_t id) override {
    calls.push_back(fmt::format("release {}", id));
    held.erase(id);
  }
  std::optional<std::map<int, std::vector<PowerAssertion>>> assertionsByProcess() override { return assertions; }
};

struct FakeCameras : Cameras {
  std::vector<Camera> cameras;
  std::vector<Camera> list() override { return cameras; }
};

struct FakeFocusMonitor : FocusMonitor {
  std::optional<bool> shared;
  std::optional<bool> screenShared() override { return shared; }
};

struct FakeRunningApplications : RunningApplications {
  std::set<std::string> running;
  std::vector<std::string> front;
  bool isRunning(const std::string& bundleIdentifier) override { return running.contains(bundleIdentifier); }
  std::vector<std::string> active() override { return front; }
};

}  // namespace vorlu::test
