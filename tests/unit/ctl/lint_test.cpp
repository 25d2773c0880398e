#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "ctl/lint/catalog_lint.h"
#include "ctl/lint/lint_command.h"
#include "ctl/lint/preferences_lint.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/state/json.h"
#include "vorlu/state/property_list.h"

namespace vorlu::test {
namespace {

using namespace ctl;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using Json = nlohmann::ordered_json;

const std::string source = VORLU_SOURCE_DIR;

std::string contentOf(const std::string& path) {
  std::ifstream file(source + path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A finding in one line.
std::vector<std::string> told(Findings findings) {
  std::vector<std::string> lines;
  for (const Finding& finding : findings.sorted())
    lines.push_back(fmt::format("{}:{} {} {}: {} — {}", finding.at.line, finding.at.column,
                                finding.severity == Severity::error ? "error" : "warning", finding.path,
                                finding.problem, finding.advice));
  return lines;
}

/// The text of a document from a place on.
std::string_view textAt(std::string_view document, Position at) {
  for (; at.line > 1; --at.line) document.remove_prefix(document.find('\n') + 1);
  return document.substr(at.column - 1);
}

Json::json_pointer pointerOf(std::string path) {
  std::string pointer = path.starts_with('[') ? "" : "/";
  for (const char c : path)
    if (c != ']') pointer += c == '.' || c == '[' ? '/' : c;
  return Json::json_pointer(pointer);
}

/// Property lists as JSON and back, so that both kinds of files are edited alike.
Json jsonOf(Node& node) {
  Json value;
  switch (node.kind()) {
    case NodeKind::boolean:
      return node.boolean();
    case NodeKind::integer:
      return *node.integer();
    case NodeKind::array:
      value = Json::array();
      node.forEachElement([&](Node& element) { value.push_back(jsonOf(element)); });
      return value;
    case NodeKind::dictionary:
      value = Json::object();
      node.forEachMember([&](std::string_view key, Node& member) { value[std::string(key)] = jsonOf(member); });
      return value;
    default:
      return std::string(node.text());
  }
}

void encode(const Json& value, Encoder& out) {
  if (value.is_boolean()) return out.boolean(value);
  if (value.is_number()) return out.integer(value);
  if (value.is_string()) return out.string(value.get<std::string>());
  value.is_array() ? out.beginArray() : out.beginDictionary();
  for (const auto& [key, item] : value.items()) {
    if (value.is_object()) out.key(key);
    encode(item, out);
  }
  value.is_array() ? out.endArray() : out.endDictionary();
}

std::string xmlOf(const Json& value) {
  return writePropertyList([&](Encoder& out) { encode(value, out); });
}

/// How a value, or a key, begins in a file.
struct FileForm {
  std::string (*value)(const Json&);
  std::string (*key)(const std::string&);
};
const FileForm jsonForm = {
    [](const Json& value) { return value.is_structured() ? value.dump().substr(0, 1) : value.dump(); },
    [](const std::string& key) { return fmt::format("\"{}\"", key); }};
const FileForm xmlForm = {[](const Json& value) {
                            const std::string xml = xmlOf(Json::array({value}));
                            const std::string element = xml.substr(xml.find("<array>") + 9);
                            return element.substr(0, element.find('\n'));
                          },
                          [](const std::string& key) { return fmt::format("<key>{}</key>", key); }};

/// The one fault of a table's row is found, where it stands, and nothing else.
void expectFault(const Json& row, Findings findings, std::string_view document, const Json& root,
                 const FileForm& form) {
  SCOPED_TRACE(row.dump());
  const std::vector<Finding> sorted = findings.sorted();
  ASSERT_EQ(sorted.size(), 1U) << fmt::format("{}", fmt::join(told(findings), "\n"));
  const Finding& finding = sorted.front();
  EXPECT_EQ(finding.path, row["path"]);
  EXPECT_EQ(finding.severity == Severity::error ? "error" : "warning", row["severity"]);
  EXPECT_THAT(finding.problem, HasSubstr(row["says"].get<std::string>()));
  EXPECT_THAT(finding.advice, AllOf(Not(IsEmpty()), HasSubstr(row.value("advice", ""))));
  ASSERT_GT(finding.at.line, 0U);
  const std::string found(textAt(document, finding.at));
  const Json::json_pointer pointer = pointerOf(finding.path);
  if (!root.contains(pointer)) {
    EXPECT_THAT(found, ::testing::AnyOf(StartsWith(form.value(Json::object()).substr(0, 5)), StartsWith("<")));
  } else {
    EXPECT_THAT(found, ::testing::AnyOf(StartsWith(form.value(root[pointer])), StartsWith(form.key(pointer.back()))));
  }
}

TEST(CatalogLint, FindsEachFaultOfTheSampleAndNothingElse) {
  const Json sample = Json::parse(contentOf("/packaging/sample-catalog.json"));
  for (const Json& row : Json::parse(contentOf("/tests/data/lint/catalog-faults.json"))) {
    const Json catalog = sample.patch(row["edit"]);
    const std::string document = catalog.dump(2);
    expectFault(row, lintCatalog(document), document, catalog, jsonForm);
  }
}

TEST(PreferencesLint, FindsEachFaultOfTheSampleAndNothingElse) {
  const Json::json_pointer settings(
      "/PayloadContent/0/PayloadContent/com.mosk.vorlu.preferences/Forced/0/mcx_preference_settings");
  Json sample;
  (void)readPropertyList(contentOf("/packaging/sample.mobileconfig"), [&](Node& node) { sample = jsonOf(node); });
  for (const Json& row : Json::parse(contentOf("/tests/data/lint/preference-faults.json"))) {
    Json profile = sample;
    const bool ofProfile = row.value("profile", false);
    Json& edited = ofProfile ? profile : profile[settings];
    edited = Json(edited).patch(row["edit"]);
    const std::string document = xmlOf(profile);
    expectFault(row, lintPreferences(document), document, edited, xmlForm);
  }
}

TEST(Lint, FindsNothingInTheSamples) {
  EXPECT_THAT(told(lintCatalog(contentOf("/packaging/sample-catalog.json"))), IsEmpty());
  EXPECT_THAT(told(lintPreferences(contentOf("/packaging/sample.mobileconfig"))), IsEmpty());
}

TEST(CatalogLint, TellsWhereAFileIsNoCatalog) {
  struct Case {
    std::string text;
    std::string finding;
  };
  const Case cases[] = {
      {"", "1:1 error : this isn't JSON: "},
      {"[\n  {\"appName\": \"Ä\" \"appType\": 1}]", "2:19 error [0]: this isn't JSON: "},
      {"[{\"appName\": \"Slides", "1:14 error [0]: this isn't JSON: "},
      {"{\"apps\": []}", "1:1 error : a catalog is an array of entries, and this is a dictionary"},
      {"[]", "1:1 error : the catalog has no entry"},
      {"[{\"a\": \"\xff\"}]", "1:8 error [0]: this isn't JSON: "},
      {std::string(100'000, '['), "1:201 error : is nested more than 200 levels deep"},
  };
  for (const Case& c : cases) EXPECT_THAT(told(lintCatalog(c.text)), ElementsAre(StartsWith(c.finding))) << c.text;

  const std::string sample = contentOf("/packaging/sample-catalog.json");
  EXPECT_FALSE(decodeJson<std::vector<AppBlueprints>>("\xef\xbb\xbf" + sample).ok());
  EXPECT_THAT(told(lintCatalog("\xef\xbb\xbf" + sample)),
              ElementsAre(StartsWith("1:1 error : the file begins with a byte order mark")));
  std::string twice = sample;
  twice.insert(twice.find("\"appName\""), "\"appName\": 5, ");
  EXPECT_THAT(told(lintCatalog(twice)), ElementsAre(HasSubstr("[0].appName: is a number"),
                                                    HasSubstr("[0].appName: is given twice in the same object")));
}

TEST(PreferencesLint, TellsWhereAFileIsNoPropertyList) {
  const auto list = [](const std::string& body) { return "<plist version=\"1.0\">\n" + body + "</plist>"; };
  struct Case {
    std::string text;
    std::string finding;
  };
  const Case cases[] = {
      {"", "1:1 error : the file is empty"},
      {"{}", "1:1 error : this is neither an XML nor a binary property list"},
      {"0\x82\x01\x02", "0:0 error : this profile is signed"},
      {"bplist00", "0:0 error : this binary property list is damaged"},
      {"<html></html>", "1:1 error : <html> can't stand here"},
      {"<plist><dict>\n<key>a</key></dict></plist>", "2:13 error : the key \"a\" has no value"},
      {list("<dict><key>a</string></dict>"), "2:15 error : this isn't well-formed XML: mismatched tag"},
      {list("<dict><true/></dict>"), "2:7 error : a value without a <key> can't stand in a <dict>"},
      {list("<dict><key>a</key><integer>x</integer></dict>"), "2:19 error : <integer> holds \"x\", which is no number"},
      {list("<dict><key>a</key>true</dict>"), "2:23 error : the text \"true\" can't stand between elements"},
      {list("<array/>"), "2:1 error : preferences are a dictionary, and this is an array"},
      {list(std::string(100'000, ' ') +
            [] {
              std::string deep;
              for (int level = 0; level < 10'000; ++level) deep += "<array>";
              return deep;
            }()),
       "2:101401 error : is nested more than 200 levels deep"},
      {list("<dict><key>hourlyCheck</key><true/><key>GeneralOptions</key><dict/></dict>"),
       "2:7 error hourlyCheck: doesn't belong here"},
  };
  for (const Case& c : cases)
    EXPECT_THAT(told(lintPreferences(c.text)), ElementsAre(StartsWith(c.finding))) << c.text.substr(0, 200);
  EXPECT_THAT(
      told(lintPreferences(list("<dict><key>GeneralOptions</key><dict/><key>GeneralOptions</key><dict/></dict>"))),
      ElementsAre(HasSubstr("2:39 error GeneralOptions: is given twice")));
}

TEST(LintCommand, WritesTextAndJsonAndTellsBySeverity) {
  TemporaryFolder folder;
  const auto fileOf = [&](const std::string& name, const std::string& text) {
    const std::string path = folder.path() + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  };
  const std::string clean = fileOf("clean.json", contentOf("/packaging/sample-catalog.json"));
  EXPECT_EQ(lintCatalogCommand({clean}).text, clean + ": nothing found\n");
  EXPECT_EQ(lintCatalogCommand({clean}).status, 0);

  const std::string binary = source + "/tests/data/lint/settings.bplist";
  const Answer errors = lintPrefsCommand({binary});
  EXPECT_EQ(errors.status, 1);
  EXPECT_EQ(
      errors.text,
      binary +
          ": error: GeneralOptions.hourlyCheck: is a text, and has to be true or false: the agent ignores the whole "
          "profile with this — write the value itself, not a text that says it\n" +
          binary +
          ": error: ScheduledUpdates.customIcon: \"a\\x0ab\" isn't the path of a file, so it isn't shown "
          "— give an absolute path\n" +
          binary + ": 2 errors, 0 warnings\n");
  const Json records = Json::parse(lintPrefsCommand({"--json", binary}).text);
  EXPECT_EQ(records.size(), 2U);
  EXPECT_FALSE(records[0].contains("line"));

  const std::string warned =
      fileOf("warned.json",
             "[\n{\"appName\": \"A\", \"appIdentifier\": \"a\", \"serverName\": \"a\",\n"
             "\"latestVersion\": \"1\", \"latestVersionMethod\": \"CFBundleVersion\",\n"
             "\"appPath\": \"/Applications/A.app\", \"prefixSearchPath\": \"/A\", \"appType\": \"appBundle\",\n"
             "\"installsAllowed\": false, \"updatesAllowed\": false}]");
  const Answer warnings = lintCatalogCommand({warned, "--json"});
  EXPECT_EQ(warnings.status, 0);
  EXPECT_EQ(Json::parse(warnings.text),
            Json::array({{{"severity", "warning"},
                          {"file", warned},
                          {"line", 4},
                          {"column", 55},
                          {"path", "[0].prefixSearchPath"},
                          {"problem", "isn't searched, because appPrefixName is missing"},
                          {"advice", "give the part of the name that is looked for, or remove it"}}}));
  for (const Arguments& unusable : {Arguments{}, {"--jsn", clean}, {clean, clean}, {folder.path()}, {"/no/such/file"}})
    EXPECT_EQ(lintCatalogCommand(unusable).status, 2);
}

}  // namespace
}  // namespace vorlu::test
