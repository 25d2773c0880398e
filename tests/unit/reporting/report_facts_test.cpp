#include "tests/support/agent_run.h"
#include "vorlu/reporting/computer_facts.h"
#include "vorlu/reporting/report_lists.h"
#include "vorlu/reporting/update_facts.h"

namespace vorlu::test {
namespace {

struct ReportFacts : ::testing::Test, AgentRun {};

TEST_F(ReportFacts, AToolThatFailsAnswersNothing) {
  const std::string text = "  Chip: Apple M3 \nFileVault is On.\n";
  const std::string refusal = "id: invalid option -- F\n";
  const std::tuple<Answer, Answer, std::string> cases[] = {
      {{.output = text}, {.output = "Al\n"}, "Apple M3 true Al"},
      {{.output = text, .status = 1}, {.output = refusal, .status = 1}, "Unknown false Root's"},
      {{.output = text, .timedOut = true}, {.output = "su: unknown login"}, "Unknown false Unknown"},
      {{.starts = false}, {.output = "Al", .status = 1}, "Unknown false Unknown"}};
  for (const auto& [answer, bySu, facts] : cases) {
    ScriptedProcesses processes;
    processes.onPrefix("/usr/", answer);
    processes.on(R"(zsh: su 'a'\''$(x)' -c "id -F")", bySu);
    processes.on(R"(zsh: id -F 'a'\''$(x)')", {.output = "Root's"});
    SystemTools tools(processes, vorlu.log);
    EXPECT_EQ(fmt::format("{} {} {}", architecture(tools), isFileVaultEnabled(tools), readFullName(tools, "a'$(x)")),
              facts);
  }
}

TEST_F(ReportFacts, NextPromptByScheme) {
  const std::int64_t midnight = 1772409600;  // of Monday, 12 hours ago
  const std::int64_t day = 86400;
  const std::tuple<const char*, const char*, int, std::int64_t, std::optional<std::int64_t>> cases[] = {
      {"specifyfrequency", "oneWeek", 3, 0, std::nullopt},
      {"SpecifyFrequency", "TWOWEEKS", 3, 5000, 5000 + 14 * day},
      {"specifyPatchDay", "", 2, midnight, midnight},
      {"specifyPatchDay", "", 2, midnight + 1, midnight + 7 * day},
      {"specifyPatchDay", "", 8, 5000, std::nullopt}};
  for (const auto& [runType, option, patchDay, lastRun, next] : cases) {
    RunPrefs prefs;
    std::tie(prefs.runType, prefs.frequencyOption, prefs.patchDay) = std::tuple(runType, option, patchDay);
    EXPECT_EQ(nextPromptTime(mac.clock, prefs, lastRun), next) << runType << patchDay << option << lastRun;
  }
}

TEST_F(ReportFacts, StatusAndAppsByWhatThisRunSaw) {
  mac.write(paths::appInventory, R"({"appInventory": [{"appName": "Kept"}, {"appName": "Too"}]})");
  UpdateState updates;
  updates.pendingFrom = Walk::single;
  updates.pendingUpdates.resize(1);
  EXPECT_EQ(reportedApps(updates, mac.files).size(), 2u);
  EXPECT_EQ(lastRunStatus(RunDataFile{}, updates), "Updates pending");
  updates.pendingFrom = Walk::refresh;
  EXPECT_TRUE(reportedApps(updates, mac.files).empty());
  EXPECT_EQ(lastRunStatus(RunDataFile{}, updates), "Up to date") << "the app that is due mayn't be updated";
  updates.failedUpdates = {"slides"};
  EXPECT_EQ(lastRunStatus(RunDataFile{}, updates), "Updates failed");
}

}  // namespace
}  // namespace vorlu::test
