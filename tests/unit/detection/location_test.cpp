#include "vorlu/detection/location.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

TEST(LocateApp, TakesTheFirstPlaceInOrder) {
  const std::string everywhere =
      R"({"appName":"Foo","appPath":"/Applications/Foo.app","alternatePaths":["/A/Foo.app","/Users/%currentUser%/B.app",
          "/C"],"appPrefixName":"Foo"})";
  const std::string alternate = "Found alternate path for Foo";
  const std::string prefix = "Found prefix search name for Foo";
  const auto expectPath = [](const char* what, const std::string& path, const std::string& entry, const Lines& folders,
                             const Lines& messages = {}) {
    AgentRun run;
    for (const std::string& folder : folders) run.mac.makeFolder(folder);
    EXPECT_EQ(locateApp(run.vorlu, run.entry(entry)), path) << what;
    EXPECT_EQ(run.messages(), messages) << what;
    EXPECT_EQ(run.shown(), Lines{}) << what;
  };
  expectPath("appPath before all else", "/Applications/Foo.app", everywhere, {"/Applications/Foo.app", "/A/Foo.app"});
  expectPath("first alternate that exists", "/Users/alice/B.app", everywhere, {"/Users/alice/B.app", "/C"},
             {alternate});
  expectPath("prefix anywhere in the name", "/Applications/MyFooTool", everywhere,
             {"/Applications/A.app", "/Applications/MyFooTool"}, {prefix});
  expectPath("first match in listing order", "/Applications/Foo A.app", everywhere,
             {"/Applications/Foo B.app", "/Applications/Foo A.app"}, {prefix});
  expectPath("prefix in its own folder", "/opt/foo9",
             R"({"appName":"Foo","prefixSearchPath":"/opt","appPrefixName":"foo"})",
             {"/Applications/foo", "/opt/Foo", "/opt/foo9"}, {prefix});
  expectPath("no folder to search", "", R"({"appPrefixName":"Foo","prefixSearchPath":"/nowhere"})", {});
  expectPath("placeholders in appPath", "/U/alice/2/%x%/%",
             R"({"appPath":"/U/%currentUser%/%latestVersion%/%x%/%","latestVersion":"2"})", {"/U/alice/2/%x%/%"});
  expectPath("no version in alternates", "/%latestVersion%",
             R"({"appName":"Foo","alternatePaths":["/%latestVersion%"],"latestVersion":"2"})",
             {"/2", "/%latestVersion%"}, {alternate});
  expectPath("empty paths are no places", "", R"({"appPath":"","alternatePaths":[""],"appPrefixName":""})",
             {"/Applications/X"});
  expectPath("nor are relative ones", "",
             R"({"appPath":"Foo","alternatePaths":["Foo"],"prefixSearchPath":".","appPrefixName":"Foo"})",
             {"/Foo", "/Applications/Foo"});
}

}  // namespace
}  // namespace vorlu::test
