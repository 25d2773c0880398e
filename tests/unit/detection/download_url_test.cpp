#include "vorlu/detection/download_url.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

TEST(DownloadURL, IsFixedOrPrintedByTheScriptOfTheBuild) {
  using enum DownloadCase;
  const auto expectURL = [](const char* what, std::optional<std::string> url, DownloadCase build,
                            const std::string& entry, const Lines& messages = {}) {
    AgentRun run;
    run.mac.processes.on("zsh: print u", {"https://u\n"});
    run.mac.processes.on("zsh: print s", {"\n"});
    run.mac.webView.pages["https://page"] = "u.zip i.zip";
    run.vorlu.currentApp.copyFields(run.entry(entry));
    run.vorlu.currentApp.appName = "Foo";
    EXPECT_EQ(resolveDownloadURL(run.vorlu, build), url) << what;
    EXPECT_EQ(run.messages(), messages) << what;
  };
  const auto scripted = [](const std::string& fields) { return "{" + fields + R"(,"specifyDownloadURL":false})"; };
  expectURL("fixed", "u", universal, R"({"universalDownloadURL":"u","universalDownloadURLCode":"x"})");
  expectURL("fixed and empty", "", universal, "{}");
  expectURL(
      "empty output", std::nullopt, appleSilicon, scripted(R"("siliconDownloadURLCode":"print s")"),
      {"Obtaining Apple Silicon Foo download URL...", "Error: Could not obtain Apple Silicon download URL for Foo"});
  expectURL("script of another build", std::nullopt, universal, scripted(R"("intelDownloadURLCode":"print u")"),
            {"Obtaining universal Foo download URL...", "Error: Could not obtain download information for Foo"});
  expectURL("the page goes before the script", std::nullopt, universal,
            scripted(R"("universalDownloadURLCode":"x","javascriptScrapeURL":"https://p")"),
            {"Obtaining universal Foo download URL...", "Error: A download URL for Foo could not be found.",
             "Error: Could not obtain universal download URL for Foo"});
}

}  // namespace
}  // namespace vorlu::test
