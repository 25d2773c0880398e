#include "vorlu/detection/download_url.h"

#include "tests/unit/detection/detection_run.h"

namespace vorlu::test {
namespace {

TEST(DownloadURL, IsFixedOrPrintedByTheScriptOfTheBuild) {
  const auto noURL = std::optional<std::string>();
  const struct {
    const char* what;
    std::string entry;
    DownloadCase build;
    std::optional<std::string> url;
    Lines messages;
  } cases[] = {
      {"fixed", R"({"universalDownloadURL":"u","universalDownloadURLCode":"x"})", DownloadCase::universal, "u", {}},
      {"fixed for Intel", R"({"intelDownloadURL":"i"})", DownloadCase::intel, "i", {}},
      {"fixed for Apple Silicon", R"({"appleSiliconDownloadURL":"s"})", DownloadCase::appleSilicon, "s", {}},
      {"fixed and empty", "{}", DownloadCase::universal, "", {}},
      {"script",
       R"({"universalDownloadURLCode":"print u","specifyDownloadURL":false})",
       DownloadCase::universal,
       "https://u",
       {"Obtaining universal Foo download URL...", "Found download URL: https://u"}},
      {"script for Intel",
       R"({"intelDownloadURLCode":"print i","specifyDownloadURL":false})",
       DownloadCase::intel,
       "https://i",
       {"Obtaining Intel Foo download URL...", "Found download URL: https://i"}},
      {"empty output",
       R"({"siliconDownloadURLCode":"print s","specifyDownloadURL":false})",
       DownloadCase::appleSilicon,
       noURL,
       {"Obtaining Apple Silicon Foo download URL...", "Error: Could not obtain Apple Silicon download URL for Foo"}},
      {"script of another build",
       R"({"intelDownloadURLCode":"print i","specifyDownloadURL":false})",
       DownloadCase::universal,
       noURL,
       {"Obtaining universal Foo download URL...", "Error: Could not obtain download information for Foo"}},
      {"the page of the build",
       R"({"javascriptScrapeURL":"https://page","javascriptScrapeIntelRegex":"i.zip","specifyDownloadURL":false})",
       DownloadCase::intel,
       "i.zip",
       {"Obtaining Intel Foo download URL...", "Obtained Foo download URL: i.zip", "Found download URL: i.zip"}},
      {"the page goes before the script",
       R"({"universalDownloadURLCode":"x","javascriptScrapeURL":"https://p","specifyDownloadURL":false})",
       DownloadCase::universal,
       noURL,
       {"Obtaining universal Foo download URL...", "Error: A download URL for Foo could not be found.",
        "Error: Could not obtain universal download URL for Foo"}},
  };
  for (const auto& c : cases) {
    DetectionRun run;
    run.platform.processes.on("zsh: print u", {"https://u\n"});
    run.platform.processes.on("zsh: print i", {"https://i\n"});
    run.platform.processes.on("zsh: print s", {"\n"});
    run.platform.webView.pages["https://page"] = "u.zip i.zip";
    run.vorlu.currentApp.copyFields(run.entry(c.entry));
    run.vorlu.currentApp.appName = "Foo";
    EXPECT_EQ(resolveDownloadURL(run.vorlu, c.build), c.url) << c.what;
    EXPECT_EQ(run.messages(), c.messages) << c.what;
  }
}

}  // namespace
}  // namespace vorlu::test
