#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <regex>

#include "reference/documents.h"
#include "reference/sample_profile.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/install/download_type.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/server/blueprint_keys.h"
#include "vorlu/state/json.h"
#include "vorlu/state/preferences.h"
#include "vorlu/state/property_list.h"

namespace vorlu::test {
namespace {

using testing::IsEmpty;

const std::string tree = VORLU_SOURCE_DIR;

std::vector<KeyReference> allKeys() {
  std::vector<KeyReference> keys = preferenceKeys();
  for (KeyReference& key : blueprintKeys()) keys.push_back(std::move(key));
  return keys;
}

TEST(Reference, GeneratedFilesAreFresh) {
  const auto documents = reference::documents(tree);
  ASSERT_TRUE(documents) << documents.error();
  for (const reference::Document& document : *documents)
    EXPECT_TRUE(readFile(tree + "/" + document.path) == document.text)
        << document.path << " doesn't tell of the keys as they are: renew it with scripts/reference";
}

/// What a note says against the key's own type, default or example.
std::vector<std::string> contradictions(const KeyReference& key) {
  std::vector<std::string> found;
  const KeyNote& note = key.note;
  const auto expect = [&](bool holds, const char* what) {
    if (!holds) found.push_back(key.path + ": " + what);
  };
  expect(note.help.size() > 8 && note.help.back() == '.' && note.help.find('\n') == std::string_view::npos, "no help");
  expect(key.type == KeyType::text || (note.choices.empty() && note.pattern.empty()), "values of a text");
  expect(key.type == KeyType::integer || !note.range, "range of a number");
  if (!note.choices.empty() && key.defaultText) expect(choiceFor(note, *key.defaultText).has_value(), "default");
  if (note.range && key.defaultText) {
    const std::int64_t value = std::stoll(*key.defaultText);
    expect(value >= note.range->lowest && value <= note.range->highest, "default out of range");
  }
  if (!note.pattern.empty())
    expect(std::regex_match(std::string(note.example), std::regex(std::string(note.pattern))), "example");
  return found;
}

TEST(Reference, NotesFitTheirKeys) {
  std::map<std::string, const KeyReference*> byPath;
  const std::vector<KeyReference> keys = allKeys();
  for (const KeyReference& key : keys) EXPECT_TRUE(byPath.emplace(key.path, &key).second) << key.path << " twice";
  for (const KeyReference& key : keys) {
    EXPECT_THAT(contradictions(key), IsEmpty());
    const std::string section = key.section().empty() ? "" : std::string(key.section()) + ".";
    EXPECT_TRUE(key.note.needs.empty() || byPath.contains(section + std::string(key.note.needs))) << key.path;
  }
  for (const std::string_view type : byPath.at("downloadFileType")->note.choices)
    EXPECT_NE(findDownloadType(type), nullptr) << type;
}

TEST(Reference, KeysTellWhatIsUsedWithoutThem) {
  std::map<std::string, std::string> defaults;
  for (const KeyReference& key : allKeys()) defaults[key.path] = key.defaultText.value_or("none");
  EXPECT_EQ(defaults["ScheduledUpdates.runFrequency.runType"], "specifyFrequency");  // its choice's spelling
  EXPECT_EQ(defaults["ScheduledUpdates.updateProgressPosition"], "topright");        // the flow's
  EXPECT_EQ(defaults["ForcedUpdates.updateProgressPosition"], "top");                // the member's
  EXPECT_EQ(defaults["ForcedUpdates.customTitle"], texts::forcedTitle);
  EXPECT_EQ(defaults["ScheduledUpdates.customUpdateButton"], texts::update);
  EXPECT_EQ(defaults["ScheduledUpdates.customSkipButton"], texts::skip);
  EXPECT_EQ(defaults["mode"], "755");
  EXPECT_EQ(defaults["appName"], "none");
}

TEST(Reference, SamplesAreReadAsTheyAreMeant) {
  const auto catalog = decodeJson<std::vector<AppBlueprints>>(readFile(tree + "/packaging/sample-catalog.json"));
  ASSERT_TRUE(catalog) << catalog.error();
  // every key of the sample is one of the record: writing the record gives them all back
  EXPECT_EQ(nlohmann::json::parse(encodeJson(*catalog, JsonLayout::compact)),
            nlohmann::json::parse(readFile(tree + "/packaging/sample-catalog.json")));
  const auto prefs = decodePropertyList<CustomPrefs>(reference::samplePreferences());
  ASSERT_TRUE(prefs) << prefs.error();
  EXPECT_EQ(prefs->ScheduledUpdates.deferralConfiguration.specifyLimit, 3);
  EXPECT_EQ(prefs->ScheduledUpdates.runLimitations.fridayEndTime, "14:00");
  EXPECT_FALSE(prefs->ScheduledUpdates.runLimitations.sunday);
  EXPECT_EQ(prefs->ForcedUpdates.acceptableAppAssertions, TextList{"zoom.us"});
}

}  // namespace
}  // namespace vorlu::test
