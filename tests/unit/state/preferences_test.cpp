#include "vorlu/state/preferences.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string withGrace(int minutes) {
  return plistOf("<key>ScheduledUpdates</key><dict><key>gracePeriodMinutes</key><integer>" + std::to_string(minutes) +
                 "</integer></dict>");
}

struct PreferencesTest : testing::Test, AgentRun {
  CustomPrefs load() { return loadPreferences(mac.platform(), vorlu.log); }
};

TEST_F(PreferencesTest, TheFirstPathThatExistsWins) {
  // from the last of the search order to the first: each one added takes over
  const Lines folders = {"/Users/alice/Library/Preferences/", "/Library/Preferences/",
                         "/private/var/root/Library/Preferences/"};
  const std::string managed = "/Library/Managed Preferences/";
  Lines order;
  for (const std::string domain : {"com.mosk.update.preferences.plist", "com.mosk.vorlu.preferences.plist"})
    for (const std::string& folder : folders) order.push_back(folder + domain);
  order.push_back(managed + "com.mosk.update.preferences.plist");
  order.push_back(managed + "com.mosk.vorlu.preferences.plist");
  EXPECT_EQ(load().ScheduledUpdates.gracePeriodMinutes, 15);
  int minutes = 100;
  for (const std::string& path : order) {
    mac.write(path, withGrace(++minutes));
    EXPECT_EQ(load().ScheduledUpdates.gracePeriodMinutes, minutes) << path;
  }
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(PreferencesTest, ABrokenFileMeansDefaults) {
  setPreferences("ScheduledUpdates",
                 "<key>gracePeriodMinutes</key><integer>40</integer>"
                 "<key>runFrequency</key><dict><key>patchDay</key><string>3</string></dict>");
  EXPECT_EQ(vorlu.preferences.scheduled().gracePeriodMinutes, 15);
  EXPECT_EQ(vorlu.preferences.scheduled().runFrequency.patchDay, 3);
  EXPECT_TRUE(vorlu.preferences.general().hourlyCheck);
  EXPECT_THAT(shown(), ElementsAre("Error whilst decoding custom preferences: typeMismatch(Int, Context(codingPath: "
                                   "[\"ScheduledUpdates\", \"runFrequency\", \"patchDay\"], debugDescription: "
                                   "\"Expected to decode Int but found a string instead.\", underlyingError: nil))"));
  // what was resolved stays for the run
  setPreferences("ScheduledUpdates", "<key>gracePeriodMinutes</key><integer>30</integer>");
  EXPECT_EQ(vorlu.preferences.scheduled().gracePeriodMinutes, 15);
}

}  // namespace
}  // namespace vorlu::test
