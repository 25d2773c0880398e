#include "vorlu/policy/acceptable_use.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

using enum AcceptableUse;

struct AcceptableUseChain : testing::Test, AgentRun {
  std::optional<AcceptableUse> check() { return checkAcceptableUse(vorlu, keys, scheduledAcceptableUseLines); }
  void setMenuBar(const std::string& item, bool shown) {
    mac.write("/Users/alice/Library/Preferences/com.apple.controlcenter.plist",
              plistOf("<key>NSStatusItemVisible" + item + "</key>" + (shown ? "<true/>" : "<false/>")));
  }

  AcceptableUseKeys keys;
};

TEST_F(AcceptableUseChain, EachCheckStopsAfterThoseBeforeIt) {
  keys = {TextList{"com.example.keynote", "com.example.slides", "com.example.mail"}, TextList{"zoom.us"}, true, true,
          true};
  mac.applications.front = {"com.example.slides", "com.example.keynote"};
  mac.power.assertions = {{7, {{"zoom.us", ""}, {"caffeinate", "NoIdleSleep"}}}, {9, {{"zoom.us", "NoDisplaySleep"}}}};
  mac.cameras.cameras = {{34, false}, {35, true}};
  setMenuBar("FocusModes", true);
  mac.focus.shared = true;
  EXPECT_EQ(check(), foregroundApp);
  mac.applications.front = {"com.example.slideshow"};
  EXPECT_EQ(check(), assertion);
  mac.power.assertions->erase(9);
  EXPECT_EQ(check(), camera);
  mac.cameras.cameras[1].inUse = false;
  EXPECT_EQ(check(), doNotDisturb);
  setMenuBar("FocusModes", false);
  EXPECT_EQ(check(), screenSharing);
  mac.focus.shared = false;
  EXPECT_EQ(check(), std::nullopt);
}

TEST_F(AcceptableUseChain, WhatTheMacCannotTellStopsNothing) {
  keys = {TextList{}, TextList{"zoom.us"}, false, true, true};
  mac.power.assertions = std::nullopt;
  mac.write("/Users/alice/Library/Preferences/com.apple.controlcenter.plist", "garbage");
  EXPECT_EQ(check(), std::nullopt);
  EXPECT_EQ(messages().back(), "Unable to check if screen sharing is in use. The DND framework is unavailable.");
}

TEST_F(AcceptableUseChain, AsksTheCameraWhereTheSystemCanTell) {
  keys.camera = true;
  mac.cameras.cameras = {{35, true}};
  const std::tuple<std::optional<int>, std::string, bool> cases[] = {{7, "11.0.0", true},
                                                                     {12, "12.7.6", false},
                                                                     {std::nullopt, "12.0.0", false},
                                                                     {12, "13.0.0", true},
                                                                     {99, "14.0.0", false}};
  for (const auto& [cpu, system, asks] : cases) {
    mac.device.cpu = cpu;
    mac.device.system = system;
    EXPECT_EQ(check().has_value(), asks) << system;
  }
}

TEST_F(AcceptableUseChain, SeesDoNotDisturbThatBeginsThreeSecondsIntoThePoll) {
  keys.dndMode = true;
  for (const auto& [system, item] : {std::pair{"12.6.0", "DoNotDisturb"}, {"13.1.0", "FocusModes"}}) {
    mac.device.system = system;
    setMenuBar(item, false);
    const Seconds before = mac.clock.now();
    mac.clock.at(2.9, [&, shown = item] { setMenuBar(shown, true); });
    EXPECT_EQ(check(), doNotDisturb) << system;
    EXPECT_EQ(mac.clock.now() - before, 3) << system;
  }
  setMenuBar("DoNotDisturb", true);  // not what this release shows
  const Seconds before = mac.clock.now();
  EXPECT_EQ(check(), std::nullopt);
  EXPECT_EQ(mac.clock.now() - before, 5);
}

}  // namespace
}  // namespace vorlu::test
