#include "vorlu/state/json.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vorlu/server/blueprint.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/safe_property_list.h"

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
      {R"([{"unknown":nil}])", broken("The JSON element does not have the requested type.")},
      {R"([{"mode":1e300}])",
       "dataCorrupted(" + context("[\"Index 0\", \"mode\"]", "Parsed number does not fit in Int.")},
      {R"([{"\u0061ppName":5}])", mismatch("String", "[\"Index 0\", \"appName\"]", "a number")},
      {"5", mismatch("Array<Any>", "[]", "a number")},
      {"null", mismatch("Array<Any>", "[]", "null")},
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
  EXPECT_EQ(decodeJson<Entries>(R"([{"mode":493.0}])")->front().mode, 493);
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
      {propertyList("<dict><key>number</key><real>1.5</real></dict>"),
       "dataCorrupted(" + context("[\"number\"]", "Parsed number does not fit in Int.")},
      {propertyList("<dict><key>number</key><real>1e300</real></dict>"),
       "dataCorrupted(" + context("[\"number\"]", "Parsed number does not fit in Int.")},
      {"not a property list", "dataCorrupted(" + context("[]", "The given data was not a valid property list.")},
      {"bplist00\x01\x02", "dataCorrupted(" + context("[]", "The given data was not a valid property list.")},
  };
  for (const auto& [text, error] : cases) {
    const auto decoded = decodePropertyList<Record>(text);
    ASSERT_FALSE(decoded.ok()) << text;
    EXPECT_EQ(decoded.error(), error) << text;
  }
  EXPECT_EQ(
      decodePropertyList<Record>(propertyList("<dict><key>name</key><string/><key>number</key><real>5</real></dict>"))
          ->number,
      5);
}

/// A binary list of arrays, by what each refers to; the first is the root.
std::string binaryArrays(const std::vector<std::vector<std::size_t>>& arrays) {
  const auto twoBytes = [](std::size_t n) { return std::string{static_cast<char>(n >> 8), static_cast<char>(n)}; };
  std::string list = "bplist00", table;
  for (const auto& references : arrays) {
    table += twoBytes(list.size());
    list += static_cast<char>(0xa0 + references.size());
    for (const std::size_t reference : references) list += twoBytes(reference);
  }
  const std::string zeros(6, '\0');
  const std::string trailer =
      zeros + "\2\2" + zeros + twoBytes(arrays.size()) + zeros + twoBytes(0) + zeros + twoBytes(list.size());
  return list + table + trailer;
}

/// `levels` arrays, each with `references` references to the next.
std::string nestedBinaryList(std::size_t levels, std::size_t references) {
  std::vector<std::vector<std::size_t>> arrays(levels);
  for (std::size_t level = 1; level < levels; ++level) arrays[level - 1].assign(references, level);
  return binaryArrays(arrays);
}

/// A root that refers to `count` chains of 100 levels, the shortest first; each chain ends in the one before it.
std::string chainedBinaryList(std::size_t count) {
  constexpr std::size_t levels = 100;
  std::vector<std::vector<std::size_t>> arrays(1);
  for (std::size_t chain = 0; chain < count; ++chain) {
    const std::size_t head = arrays.size();
    arrays.front().push_back(head);
    for (std::size_t level = 1; level < levels; ++level) arrays.push_back({head + level});
    arrays.push_back(chain == 0 ? std::vector<std::size_t>{} : std::vector<std::size_t>{head - levels});
  }
  return binaryArrays(arrays);
}

TEST(PropertyList, SmallFilesThatWouldExhaustTheParserAreRefused) {
  const auto error = [](const std::string& list) { return decodePropertyList<Record>(list).error(); };
  const std::string corrupted = "dataCorrupted(" + context("[]", "The given data was not a valid property list.");
  for (const std::string& allowed : {nestedBinaryList(100, 1), chainedBinaryList(1)})
    EXPECT_EQ(error(allowed), mismatch("Dictionary<String, Any>", "[]", "an array"));
  EXPECT_EQ(error(nestedBinaryList(130, 1)), corrupted);
  EXPECT_EQ(error(nestedBinaryList(5000, 1)), corrupted);
  EXPECT_EQ(error(chainedBinaryList(2)), corrupted);
  EXPECT_EQ(error(nestedBinaryList(40, 2)), corrupted);
  std::string deep;
  for (int level = 0; level < 300000; ++level) deep += "<array>";
  EXPECT_EQ(error(propertyList(deep)), corrupted);
}

/// What the last 32 bytes of a binary list say.
struct Trailer {
  int offsetWidth = 1, referenceWidth = 1;
  std::uint64_t objects = 1, root = 0, table = 0;  ///< table 0: right behind the objects
};

/// A binary list of `objects`, which begin at byte 8, and their offsets.
std::string binaryList(const std::string& objects, const std::string& offsets, const Trailer& trailer = {}) {
  std::string list = "bplist00" + objects + offsets + std::string(6, '\0');
  list += static_cast<char>(trailer.offsetWidth);
  list += static_cast<char>(trailer.referenceWidth);
  for (const std::uint64_t number :
       {trailer.objects, trailer.root, trailer.table != 0 ? trailer.table : 8 + objects.size()})
    for (int shift = 56; shift >= 0; shift -= 8) list += static_cast<char>(number >> shift);
  return list;
}

TEST(PropertyList, BinaryOnesWhoseTextsOrKeysUnfoldToTooMuchAreRefused) {
  const auto twoBytes = [](std::size_t n) { return std::string{static_cast<char>(n >> 8), static_cast<char>(n)}; };
  const auto isRead = [&](char textOrData, std::size_t references) {
    const std::string list = "\xaf\x11" + twoBytes(references) + std::string(references, '\1');
    const std::string text = std::string{textOrData, '\x11'} + twoBytes(60'000) + std::string(60'000, 'x');
    const std::string offsets = twoBytes(8) + twoBytes(8 + list.size());
    return isSafePropertyList(binaryList(list + text, offsets, {.offsetWidth = 2, .objects = 2}));
  };
  for (const char kind : {'\x4f', '\x5f', '\x6f'}) {
    EXPECT_TRUE(isRead(kind, 250)) << int{kind};
    EXPECT_FALSE(isRead(kind, 300)) << int{kind};
  }
  // more objects than any list has, though nothing refers to them
  EXPECT_FALSE(isSafePropertyList(binaryList("\xa0", std::string(200'001, '\x08'), {.objects = 200'001})));
  EXPECT_FALSE(isSafePropertyList(propertyList(std::string(17 << 20, ' '))));
  // a hundred dictionaries within each other that share a key
  const auto nested = [&](std::size_t keyLength) {
    constexpr std::size_t levels = 100;
    std::string dictionaries, offsets;
    for (std::size_t level = 0; level < levels; ++level) {
      offsets += twoBytes(8 + dictionaries.size());
      dictionaries += "\xd1" + twoBytes(levels + 1) + twoBytes(level + 1);
    }
    offsets += twoBytes(8 + dictionaries.size()) + twoBytes(9 + dictionaries.size());
    const std::string key =
        "\x5f\x12" + twoBytes(keyLength >> 16) + twoBytes(keyLength & 0xffff) + std::string(keyLength, 'x');
    return isSafePropertyList(binaryList(dictionaries + "\xa0" + key, offsets,
                                         {.offsetWidth = 2, .referenceWidth = 2, .objects = levels + 2}));
  };
  EXPECT_TRUE(nested(160'000));
  EXPECT_FALSE(nested(170'000));
  // three dictionaries within each other that share many keys
  const auto shared = [](std::size_t keys) {
    const auto threeBytes = [](std::size_t n) {
      return std::string{static_cast<char>(n >> 16), static_cast<char>(n >> 8), static_cast<char>(n)};
    };
    std::string objects, offsets, references;
    for (std::size_t key = 0; key < keys; ++key) references += threeBytes(4 + key);
    for (std::size_t level = 0; level < 3; ++level) {
      offsets += threeBytes(8 + objects.size());
      objects += "\xdf\x12" + std::string(1, '\0') + threeBytes(keys) + references;
      for (std::size_t key = 1; key < keys; ++key) objects += threeBytes(3);
      objects += threeBytes(level + 1);
    }
    offsets += threeBytes(8 + objects.size());
    objects += "\xa0";
    for (std::size_t key = 0; key < keys; ++key) {
      offsets += threeBytes(8 + objects.size());
      objects += fmt::format("\x55{:05}", key);
    }
    return isSafePropertyList(
        binaryList(objects, offsets, {.offsetWidth = 3, .referenceWidth = 3, .objects = 4 + keys}));
  };
  EXPECT_TRUE(shared(30'000));
  EXPECT_FALSE(shared(70'000));
}

TEST(PropertyList, BinaryOnesThatPointOutsideThemselvesAreRefused) {
  const std::string corrupted = "dataCorrupted(" + context("[]", "The given data was not a valid property list.");
  const std::string twenty = std::string("\xaf\x10\x14") + std::string(20, '\1');  // references, counted by an object
  EXPECT_EQ(decodePropertyList<Record>(binaryList(twenty + "\x50", "\x08\x1f", {.objects = 2})).error(),
            mismatch("Dictionary<String, Any>", "[]", "an array"));
  const std::string empty = "\xa0", at8 = "\x08";
  const auto endingWith = [](std::uint64_t table) { return std::string(table - 8, '\x50'); };
  const std::pair<const char*, std::string> cases[] = {
      {"shorter than its trailer", "bplist00" + empty},
      {"offsets of no width", binaryList(empty, at8, {.offsetWidth = 0})},
      {"offsets too wide", binaryList(empty, at8, {.offsetWidth = 9})},
      {"references of no width", binaryList(empty, at8, {.referenceWidth = 0})},
      {"references too wide", binaryList(empty, at8, {.referenceWidth = 9})},
      {"offsets outside", binaryList(empty, at8, {.table = std::uint64_t{1} << 40})},
      {"more objects than offsets", binaryList(empty, at8, {.objects = 1000})},
      {"root outside", binaryList(empty, at8, {.root = 1})},
      {"object outside", binaryList(empty, "\xff")},
      {"reference outside", binaryList("\xa1\x07", at8)},
      {"array in itself", binaryList(std::string("\xa1\0", 2), at8)},
      {"keys outside", binaryList("\xde", at8, {.referenceWidth = 8})},
      {"key outside", binaryList("\xd1\1\1", "\x08\xff", {.objects = 2})},
      {"references outside", binaryList("\xae", at8, {.referenceWidth = 8})},
      {"count that is no number", binaryList("\xaf\x50", at8)},
      {"count too wide", binaryList("\xaf\x14", at8)},
      {"count beyond everything", binaryList("\xaf\x13" + std::string(8, '\xff'), at8)},
      {"text beyond everything", binaryList("\x5f\x13" + std::string(8, '\xff'), at8)},
      {"count behind the end",
       binaryList(endingWith(0x14af), "\x14\xd0", {.offsetWidth = 2})},  // its last byte begins an array
      {"count cut off",
       binaryList(endingWith(0xaf13), "\xaf\x33", {.offsetWidth = 2})},  // its last two begin an array and a count
  };
  for (const auto& [what, list] : cases) {
    const auto decoded = decodePropertyList<Record>(list);
    ASSERT_FALSE(decoded.ok()) << what;
    EXPECT_EQ(decoded.error(), corrupted) << what;
  }
}

TEST(PropertyList, BinaryKeysThatTheParserDiesOfAreRefused) {
  // a dictionary of one key and the text "v"
  const auto read = [](const std::string& key) {
    const std::string offsets{8, 13, 11};
    const auto dictionary = PropertyDictionary::parse(binaryList("\xd1\1\2\x51v" + key, offsets, {.objects = 3}));
    return dictionary.ok() ? dictionary->toXml() : "";
  };
  const auto bytes = [](const char* text, std::size_t length) { return std::string(text, length); };
  EXPECT_THAT(read("\x53key"), testing::HasSubstr("<key>key</key>\n\t<string>v<"));
  EXPECT_THAT(read(bytes("\x62\0k\1\0", 5)), testing::HasSubstr("<key>k\xC4\x80</key>"));
  EXPECT_THAT(read("\x5f\x10\x0fVeryLongKeyOf15"), testing::HasSubstr("<key>VeryLongKeyOf15</key>"));
  for (const std::string& key : {bytes("\x63\0k\0\0\0y", 7), bytes("\x62\xd8\1\0\0", 5), bytes("\x53k\0y", 4),
                                 bytes("\x10\5", 2), bytes("\xa0", 1), bytes("\x6e\0k", 3), bytes("\x5e", 1),
                                 bytes("\x5f\x14", 2), bytes("\x5f\x10\xff", 3), bytes("\x6f\x10\xff", 3)})
    EXPECT_EQ(read(key), "") << testing::PrintToString(key);
  EXPECT_FALSE(PropertyDictionary::parse(binaryList("\xd1\7\1\x51v", "\x08\x0b", {.objects = 2})).ok());
}

TEST(PropertyList, BinaryDictionaryWithAKeyTwiceIsRefused) {
  const auto wide = [](const char* text) { return std::string("\x61\0", 2) + text; };
  const std::string grin("\x62\xd8\x3d\xde\x00", 5), smile("\x62\xd8\x3d\xde\x01", 5);
  const auto isRead = [](const std::string& first, const std::string& second, const std::string& keys = "\1\2") {
    const std::string offsets{8, 13, char(13 + first.size()), char(13 + first.size() + second.size())};
    const auto list = binaryList("\xd2" + keys + "\3\3" + first + second + "\x51v", offsets, {.objects = 4});
    return PropertyDictionary::parse(list).ok();
  };
  EXPECT_TRUE(isRead("\x51k", "\x51l"));
  EXPECT_TRUE(isRead("\x51k", wide("l")));
  EXPECT_TRUE(isRead(grin, smile));
  EXPECT_TRUE(isRead("\x51k", std::string("\x61\xff\x01", 3))) << "behind the halves of pairs";
  EXPECT_FALSE(isRead("\x51k", "\x51l", "\1\1")) << "one object for both";
  EXPECT_FALSE(isRead("\x51k", "\x51k"));
  EXPECT_FALSE(isRead("\x51k", wide("k"))) << "as wide and as narrow characters";
  EXPECT_FALSE(isRead("\x51k", "\x52k\xc3")) << "not ASCII";
  EXPECT_FALSE(isRead("\x51k", grin.substr(0, 3).replace(0, 1, "\x61"))) << "half a pair";
  EXPECT_FALSE(isRead("\x51k", std::string("\x62\xde\x00\0k", 5))) << "the other half";
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
