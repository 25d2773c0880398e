#include "vorlu/detection/web_scraper.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(WebScraperTest, FindsTheFirstWholeMatch) {
  const std::string page = "<a href=\"https://x/y?a=1&amp;b=2\">1</a> <a href=\"https://x/y?a=3\">2</a>";
  const char* const missing = "Error: A download URL for Foo could not be found.";
  const auto expectFound = [&](const char* url, const char* pattern, const std::optional<std::string>& found,
                               const char* message) {
    AgentRun run;
    run.mac.webView.pages["https://p"] = page;
    run.vorlu.currentApp.appName = "Foo";
    EXPECT_EQ(scrapeDownloadURL(run.vorlu, url, pattern), found) << url << " " << pattern;
    EXPECT_EQ(run.messages(), Lines{message}) << url << " " << pattern;
  };
  expectFound("https://p", "https://x/([^\"]*)", "https://x/y?a=1&b=2",
              "Obtained Foo download URL: https://x/y?a=1&b=2");
  expectFound("https://p", "a=9", std::nullopt, missing);
  expectFound("https://p", "z*", std::nullopt, "Obtained Foo download URL: ");
  expectFound("https://other", "a", std::nullopt, missing);
  for (const char* url :
       {"--load-extension=/tmp", "file://p", "https://", "https:///p", "https://p /", "https://p\x7f", "https://p|x"})
    expectFound(url, "a", std::nullopt, "Error: Invalid search URL sepcified, could not obtain download URL.");
}

TEST(WebScraperTest, ReportsBadPatternsAndPassesOnlyUserAgents) {
  AgentRun run;
  run.mac.webView.pages["https://p"] = "x";
  run.vorlu.currentApp.requestHeaderValue = "Browser 1";
  for (const char* key : {"USER-Agent", "X-User-Agent"}) {
    run.vorlu.currentApp.requestHeaderKey = key;
    EXPECT_FALSE(scrapeDownloadURL(run.vorlu, "https://p", "("));
  }
  EXPECT_THAT(run.mac.webView.userAgents, ElementsAre("Browser 1", ""));
  EXPECT_THAT(run.messages().front(), HasSubstr("Error: Regular expression errored -  "));
}

}  // namespace
}  // namespace vorlu::test
