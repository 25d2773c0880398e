#include "vorlu/detection/web_scraper.h"

#include <unistd.h>

#include "tests/support/agent_run.h"
#include "tests/support/scripted_server.h"
#include "vorlu/platform/linux/linux_processes.h"
#include "vorlu/platform/linux/linux_web_view.h"

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
  expectFound("--load-extension=/tmp", "a", std::nullopt,
              "Error: Invalid search URL sepcified, could not obtain download URL.");
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

TEST(LinuxWebViewTest, RunsThePagesScriptsAndLeavesNoProfile) {
  if (::access("/usr/lib/chromium/chromium", X_OK) != 0) GTEST_SKIP() << "Chromium isn't installed";
  refserver::Response page =
      reply(200, "<p id=a></p><script>document.getElementById('a').innerText = navigator.userAgent + (6 * 7)</script>");
  page.contentType = "text/html";
  ScriptedServer server([&page](const auto&) { return page; });
  TestPlatform mac;
  LinuxProcesses processes;
  LinuxWebView view(RootFolder(mac.root()), mac.files, processes);
  const auto html = view.outerHTML(server.url("/page"), "Browser");
  ASSERT_TRUE(html);
  EXPECT_THAT(*html, HasSubstr(">Browser42</p>"));
  EXPECT_THAT(*mac.files.list("/private/var/tmp"), ::testing::IsEmpty());
}

}  // namespace
}  // namespace vorlu::test
