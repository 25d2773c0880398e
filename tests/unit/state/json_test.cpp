#include "vorlu/state/json.h"

#include <gtest/gtest.h>

#include "vorlu/server/blueprint.h"
#include "vorlu/state/property_list.h"

namespace vorlu {
namespace {

using Entries = std::vector<AppBlueprints>;

std::string context(const std::string& path, const std::string& why) {
  return "Context(codingPath: " + path + ", debugDescription: \"" + why + "\", underlyingError: nil))";
}

std::string mismatch(const std::string& type, const std::string& path, const std::string& found) {
  return "typeMismatch(" + type + ", " +
         context(path, "Expected to decode " + type + " but found " + found + " instead.");
}

std::string broken(const std::string& why) {
  return "dataCorrupted(" + context("[]", "The given data was not valid JSON. " + why);
}

const char* const badStructure =
    "The JSON document has an improper structure: missing or superfluous commas, braces, missing keys, etc.";

TEST(Json, TellsWhatIsWrongAndWhere) {
  const std::pair<const char*, std::string> cases[] = {
      {"{}", mismatch("Array<Any>", "[]", "a dictionary")},
      {"[[]]", mismatch("Dictionary<String, Any>", "[\"Index 0\"]", "an array")},
      {R"([{},{"mode":"755"}])", mismatch("Int", "[\"Index 1\", \"mode\"]", "a string")},
      {R"([{"mode":true}])", mismatch("Int", "[\"Index 0\", \"mode\"]", "a bool")},
      {R"([{"gracefulQuit":1}])", mismatch("Bool", "[\"Index 0\", \"gracefulQuit\"]", "a number")},
      {R"([{"alternatePaths":["a",null]}])",
       mismatch("String", "[\"Index 0\", \"alternatePaths\", \"Index 1\"]", "null")},
      {R"([{"mode":1.5}])",
       "dataCorrupted(" + context("[\"Index 0\", \"mode\"]", "Parsed number does not fit in Int.")},
      {"", broken("Empty: no JSON found")},
      {"<html><body>404</body></html>", broken(badStructure)},
      {R"([{"appName":"a")", broken(badStructure)},
      {R"([{"appName":"a":[1]@]}])", broken(badStructure)},
      {"[] []", broken("Unexpected trailing content in the JSON input.")},
      {R"([{"unknown":{"deep":[tru]}}])", broken("The JSON element does not have the requested type.")},
  };
  for (const auto& [text, error] : cases) {
    const auto decoded = decodeJson<Entries>(text);
    ASSERT_FALSE(decoded.ok()) << text;
    EXPECT_EQ(decoded.error(), error) << text;
  }
}

TEST(Json, RefusesADocumentThatWouldExhaustTheStack) {
  const auto nested = [](std::size_t levels) {
    return decodeJson<Entries>("[{\"unknown\":" + std::string(levels, '[') + std::string(levels, ']') + "}]");
  };
  EXPECT_TRUE(nested(500).ok());
  ASSERT_FALSE(nested(500'000).ok());
  EXPECT_EQ(nested(500'000).error(), broken("The JSON document was too deep (too many nested objects and arrays)"));
}

TEST(Json, KeepsWhatARecordHoldsAndNothingElse) {
  // absent and null are the same, unknown keys go, order is the record's, present empty values stay
  const auto decoded = decodeJson<Entries>(
      R"([{"mode":0,"unknown":[{"a":1}],"appName":"Å \"x\"\n","owner":"","appIdentifier":null},{}])");
  ASSERT_TRUE(decoded.ok()) << decoded.error();
  EXPECT_EQ(encodeJson(*decoded, JsonLayout::compact),
            "[{\"appName\":\"Å \\\"x\\\"\\n\",\"owner\":\"\",\"mode\":0},{}]");
  AppBlueprints noText;
  noText.appName = "a\xff";
  EXPECT_EQ(encodeJson(noText, JsonLayout::compact), "{\"appName\":\"a\xef\xbf\xbd\"}");
}

struct Record {
  std::int64_t number = 7;
  std::string name;
  static constexpr auto fields() {
    return std::array{field<&Record::number>("number"), requiredField<&Record::name>("name")};
  }
};

std::string propertyList(const std::string& inside) {
  return "<plist version=\"1.0\">" + inside + "</plist>";
}

TEST(PropertyList, TellsWhatIsWrongAndWhere) {
  const std::pair<std::string, std::string> cases[] = {
      {propertyList("<array/>"), mismatch("Dictionary<String, Any>", "[]", "an array")},
      {propertyList("<dict><key>name</key><date>2026-01-01T00:00:00Z</date></dict>"),
       mismatch("String", "[\"name\"]", "a date or data")},
      {propertyList("<dict/>"), "keyNotFound(name, " + context("[]", "No value associated with key name.")},
      {"not a property list", "dataCorrupted(" + context("[]", "The given data was not a valid property list.")},
      {"bplist00\x01\x02", "dataCorrupted(" + context("[]", "The given data was not a valid property list.")},
  };
  for (const auto& [text, error] : cases) {
    const auto decoded = decodePropertyList<Record>(text);
    ASSERT_FALSE(decoded.ok()) << text;
    EXPECT_EQ(decoded.error(), error) << text;
  }
}

/// A binary list of `levels` arrays, each with `references` references to the next.
std::string nestedBinaryList(std::size_t levels, std::size_t references) {
  const auto twoBytes = [](std::size_t n) { return std::string{static_cast<char>(n >> 8), static_cast<char>(n)}; };
  std::string list = "bplist00", table;
  for (std::size_t level = 1; level <= levels; ++level) {
    table += twoBytes(list.size());
    const std::size_t count = level == levels ? 0 : references;
    list += static_cast<char>(0xa0 + count);
    for (std::size_t i = 0; i < count; ++i) list += twoBytes(level);
  }
  const std::string zeros(6, '\0');
  const std::string trailer =
      zeros + "\2\2" + zeros + twoBytes(levels) + zeros + twoBytes(0) + zeros + twoBytes(list.size());
  return list + table + trailer;
}

TEST(PropertyList, SmallFilesThatWouldExhaustTheParserAreRefused) {
  const auto error = [](const std::string& list) { return decodePropertyList<Record>(list).error(); };
  const std::string corrupted = "dataCorrupted(" + context("[]", "The given data was not a valid property list.");
  EXPECT_EQ(error(nestedBinaryList(300, 1)), mismatch("Dictionary<String, Any>", "[]", "an array"));
  EXPECT_EQ(error(nestedBinaryList(5000, 1)), corrupted);
  EXPECT_EQ(error(nestedBinaryList(40, 2)), corrupted);
  std::string deep;
  for (int level = 0; level < 300000; ++level) deep += "<array>";
  EXPECT_EQ(error(propertyList(deep)), corrupted);
}

TEST(PropertyDictionary, ChangesOneKeyAndKeepsTheOthers) {
  auto dictionary = PropertyDictionary::parse(propertyList("<dict><key>Foreign</key><real>1.5</real></dict>"));
  ASSERT_TRUE(dictionary.ok());
  dictionary->set("CurrentRunType", std::string_view("N/A"));
  dictionary->set("LastRun", std::int64_t{1700000000});
  dictionary->set("UserDeferred", true);
  const std::string xml = dictionary->toXml();
  for (const char* part : {"<key>Foreign</key>\n\t<real>1.5", "<string>N/A</string>", "<integer>1700000000</integer>",
                           "<key>UserDeferred</key>\n\t<true/>"}) {
    EXPECT_NE(xml.find(part), std::string::npos) << part << " in\n" << xml;
  }
  EXPECT_FALSE(PropertyDictionary::parse(propertyList("<array/>")).ok());
}

}  // namespace
}  // namespace vorlu
