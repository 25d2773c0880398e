#include "vorlu/state/preferences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/state/state_run.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string profile(const std::string& section, const std::string& keys) {
  return "<plist version=\"1.0\"><dict><key>" + section + "</key><dict>" + keys + "</dict></dict></plist>";
}

std::string withGrace(int minutes) {
  return profile("ScheduledUpdates", "<key>gracePeriodMinutes</key><integer>" + std::to_string(minutes) + "</integer>");
}

struct PreferencesTest : testing::Test, StateRun {
  CustomPrefs load() { return loadPreferences(mac.platform(), vorlu.log); }
};

TEST_F(PreferencesTest, TheFirstPathThatExistsWins) {
  // from the last of the search order to the first: each one added takes over
  const char* order[] = {"/Users/alice/Library/Preferences/com.mosk.update.preferences.plist",
                         "/Library/Preferences/com.mosk.update.preferences.plist",
                         "/private/var/root/Library/Preferences/com.mosk.update.preferences.plist",
                         "/Users/alice/Library/Preferences/com.mosk.vorlu.preferences.plist",
                         "/Library/Preferences/com.mosk.vorlu.preferences.plist",
                         "/private/var/root/Library/Preferences/com.mosk.vorlu.preferences.plist",
                         "/Library/Managed Preferences/com.mosk.update.preferences.plist",
                         "/Library/Managed Preferences/com.mosk.vorlu.preferences.plist"};
  EXPECT_EQ(load().ScheduledUpdates.gracePeriodMinutes, 15);
  int minutes = 100;
  for (const char* path : order) {
    mac.write(path, withGrace(++minutes));
    EXPECT_EQ(load().ScheduledUpdates.gracePeriodMinutes, minutes) << path;
  }
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(PreferencesTest, ABrokenFileMeansDefaults) {
  const std::string path = "/Library/Managed Preferences/com.mosk.vorlu.preferences.plist";
  const std::string wrongType = profile("ScheduledUpdates",
                                        "<key>gracePeriodMinutes</key><integer>40</integer><key>runFrequency</key>"
                                        "<dict><key>patchDay</key><string>3</string></dict>");
  mac.write(path, wrongType);
  EXPECT_EQ(vorlu.preferences.scheduled().gracePeriodMinutes, 15);
  EXPECT_EQ(vorlu.preferences.scheduled().runFrequency.patchDay, 3);
  EXPECT_TRUE(vorlu.preferences.general().hourlyCheck);
  EXPECT_THAT(shown(),
              ElementsAre("Error whilst decoding custom preferences: typeMismatch(Int, Context(codingPath: "
                          "[\"ScheduledUpdates\", \"runFrequency\", \"patchDay\"], debugDescription: \"Expected to "
                          "decode Int but found a string instead.\", underlyingError: nil))"));
  // what was resolved stays for the run
  mac.write(path, withGrace(30));
  EXPECT_EQ(vorlu.preferences.scheduled().gracePeriodMinutes, 15);
}

TEST_F(PreferencesTest, AFolderInTheWayHidesTheOtherFiles) {
  mac.makeFolder("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist");
  mac.write("/Library/Preferences/com.mosk.vorlu.preferences.plist", withGrace(30));
  EXPECT_EQ(load().ScheduledUpdates.gracePeriodMinutes, 15);
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(PreferencesTest, SectionsDifferInTheirDefaults) {
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            profile("ForcedUpdates",
                    "<key>acceptableDNDMode</key><true/><key>runLimitations</key><dict>"
                    "<key>sunday</key><false/><key>mondayStartTime</key><string>09:00</string></dict>"));
  const CustomPrefs prefs = load();
  EXPECT_TRUE(prefs.ForcedUpdates.acceptableDNDMode);
  EXPECT_FALSE(prefs.ScheduledUpdates.acceptableDNDMode);
  EXPECT_EQ(prefs.ForcedUpdates.updateProgressPosition, "top");
  EXPECT_FALSE(prefs.ScheduledUpdates.updateProgressPosition);
  EXPECT_FALSE(prefs.ForcedUpdates.runLimitations.day(1).allowed);
  EXPECT_EQ(prefs.ForcedUpdates.runLimitations.day(2).startTime, "09:00");
  for (int day = 1; day <= 7; ++day) EXPECT_TRUE(prefs.ScheduledUpdates.runLimitations.day(day).allowed);
}

}  // namespace
}  // namespace vorlu::test
