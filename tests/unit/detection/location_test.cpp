#include "vorlu/detection/location.h"

#include "tests/unit/detection/detection_run.h"

namespace vorlu::test {
namespace {

TEST(LocateApp, TakesTheFirstPlaceInOrder) {
  const std::string everywhere =
      R"({"appName":"Foo","appPath":"/Applications/Foo.app","alternatePaths":["/A/Foo.app","/Users/%currentUser%/B.app",
          "/C"],"appPrefixName":"Foo"})";
  const std::string alternate = "Found alternate path for Foo";
  const std::string prefix = "Found prefix search name for Foo";
  const struct {
    const char* what;
    std::string entry;
    Lines folders;
    std::string path;
    Lines messages;
  } cases[] = {
      {"appPath before all else", everywhere, {"/Applications/Foo.app", "/A/Foo.app"}, "/Applications/Foo.app", {}},
      {"first alternate that exists", everywhere, {"/Users/alice/B.app", "/C"}, "/Users/alice/B.app", {alternate}},
      {"prefix anywhere in the name",
       everywhere,
       {"/Applications/A.app", "/Applications/MyFooTool"},
       "/Applications/MyFooTool",
       {prefix}},
      {"first match in listing order",
       everywhere,
       {"/Applications/Foo B.app", "/Applications/Foo A.app"},
       "/Applications/Foo A.app",
       {prefix}},
      {"prefix in its own folder",
       R"({"appName":"Foo","prefixSearchPath":"/opt","appPrefixName":"foo"})",
       {"/Applications/foo", "/opt/Foo", "/opt/foo9"},
       "/opt/foo9",
       {prefix}},
      {"no folder to search", R"({"appPrefixName":"Foo","prefixSearchPath":"/nowhere"})", {}, "", {}},
      {"placeholders in appPath",
       R"({"appPath":"/U/%currentUser%/%latestVersion%/%x%/%","latestVersion":"2"})",
       {"/U/alice/2/%x%/%"},
       "/U/alice/2/%x%/%",
       {}},
      {"no version in alternates",
       R"({"appName":"Foo","alternatePaths":["/%latestVersion%"],"latestVersion":"2"})",
       {"/2", "/%latestVersion%"},
       "/%latestVersion%",
       {alternate}},
      {"empty paths are no places",
       R"({"appPath":"","alternatePaths":[""],"appPrefixName":""})",
       {"/Applications/X"},
       "",
       {}},
      {"nor are relative ones",
       R"({"appPath":"Foo","alternatePaths":["Foo"],"prefixSearchPath":".","appPrefixName":"Foo"})",
       {"/Foo", "/Applications/Foo"},
       "",
       {}},
      {"nothing given", "{}", {"/Applications/X"}, "", {}},
  };
  for (const auto& c : cases) {
    DetectionRun run;
    for (const std::string& folder : c.folders) run.platform.makeFolder(folder);
    EXPECT_EQ(locateApp(run.vorlu, run.entry(c.entry)), c.path) << c.what;
    EXPECT_EQ(run.messages(), c.messages) << c.what;
    EXPECT_EQ(run.platform.console.lines(), Lines{}) << c.what;
  }
}

TEST(LocateApp, LogsAPrefixFolderThatCannotBeListed) {
  DetectionRun run;
  run.platform.write("/opt", "a file");
  EXPECT_EQ(locateApp(run.vorlu, run.entry(R"({"prefixSearchPath":"/opt","appPrefixName":"Foo"})")), "");
  EXPECT_THAT(run.messages(), testing::ElementsAre(testing::StartsWith("Failed to list prefix directory items: ")));
}

}  // namespace
}  // namespace vorlu::test
