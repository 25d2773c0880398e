#include "vorlu/policy/deferrals.h"

#include "tests/support/agent_run.h"

namespace vorlu::test {
namespace {

constexpr std::int64_t longAgo = 1000;

struct Deferrals : testing::Test, AgentRun {
  Deferrals() { mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"}); }
  void configure(const std::string& option, int limit = 2) {
    setPreferences("ScheduledUpdates",
                   fmt::format("<key>deferralConfiguration</key><dict><key>deferralOption</key><string>{}</string>"
                               "<key>specifyLimit</key><integer>{}</integer></dict>",
                               option, limit));
  }
  void storeCount(const std::optional<std::string>& count) {
    RunDataFile file;
    file.DeferCount = count;
    file.LastRun = longAgo;
    file.UserDeferred = true;
    store(file);
  }
  /// DeferCount, whether LastRun has moved, and UserDeferred.
  std::string state() {
    const RunDataFile file = runData();
    return fmt::format("{} {} {}", file.DeferCount.value_or("-"), *file.LastRun == longAgo ? "then" : "now",
                       *file.UserDeferred);
  }
};

TEST_F(Deferrals, SetUpFitsTheStoredCountToTheMode) {
  const std::string limited = "specifyDeferralLimit", unlimited = "disableDeferralLimit", disabled = "disableDeferrals";
  const struct {
    std::string option;
    std::optional<std::string> stored;
    std::string state;
    std::optional<std::int64_t> left;
    Lines lines;
  } cases[] = {
      {limited, std::nullopt, "2 now false", 2, {"Could not read the deferral count"}},
      {limited, "N/A", "2 then false", 2, {"An update deferral limit was not previously specified"}},
      {limited, "", "2 then false", 2, {"An update deferral limit was not previously specified"}},
      {limited, "1", "1 then true", 1, {}},
      {limited, "-1", "-1 then true", -1, {}},
      {limited, "two", "2 now false", 2, {"Could not read the deferral count"}},
      {unlimited, "1", "N/A now false", std::nullopt, {"Switching deferral mode..."}},
      {unlimited, "N/A", "N/A then true", std::nullopt, {}},
      {unlimited, std::nullopt, "- then true", 2, {}},
      {disabled, "1", "N/A now false", std::nullopt, {"Switching deferral mode..."}},
      {"SpecifyDeferralLimit", "7", "7 then true", 7, {}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.option + " " + test.stored.value_or("absent"));
    Vorlu run(mac.platform(), site);
    configure(test.option);
    storeCount(test.stored);
    messages();
    prepareDeferralState(run);
    EXPECT_EQ(state(), test.state);
    const bool counts = test.option != unlimited && test.option != disabled;
    EXPECT_TRUE(!counts || run.runData.deferCountRemaining() == test.left);
    Lines lines = test.lines;
    if (test.option == limited)
      lines = joined(lines, {"A deferral limit of 2 has been configured for any pending updates.",
                             fmt::format("Remaining update deferrals: {}", *test.left)});
    if (test.option == unlimited)
      lines.emplace_back("Deferrals have been configured with no Deferral Limit for any pending updates.");
    if (test.option == disabled) lines.emplace_back("Deferrals have been disabled for any pending updates.");
    EXPECT_EQ(messages(), lines);
  }
}

TEST_F(Deferrals, ACorruptFileCostsNoMoreThanADeferralOfThisRun) {
  configure("specifyDeferralLimit");
  mac.write(paths::runData, "garbage");
  prepareDeferralState(vorlu);
  EXPECT_EQ(vorlu.runData.deferCountRemaining(), 2);
  EXPECT_EQ(endOf([&] { recordDeferral(vorlu); }), 0);
  EXPECT_EQ(mac.read(paths::runData), "garbage") << "set aside by the next run's start";
}

TEST_F(Deferrals, AreCountedOnceAndEndTheRun) {
  const auto end = [this](const char* option, const char* count, const auto& act) {
    Vorlu run(mac.platform(), site);
    configure(option);
    storeCount(count);
    prepareDeferralState(run);
    messages();
    EXPECT_EQ(endOf([&] { act(run); }), 0);
    EXPECT_EQ(runData().CurrentRunType, "N/A");
    const std::string told = mac.read(paths::jamfLog);
    return state() + told.substr(told.rfind("]: ") + 2);
  };
  const auto defer = [](Vorlu& run) { recordDeferral(run); };
  EXPECT_EQ(end("specifyDeferralLimit", "2", defer), "1 now true User deferred the update. The defer count is now 1\n");
  EXPECT_EQ(messages(),
            (Lines{"Defer selected", "Setting last compliant date: 2026-02-15 12:00:00 +0000", "Exiting."}));
  EXPECT_EQ(runData().LastCompliant, "Feb 15 2026 12:00:00 +0000");
  EXPECT_EQ(end("specifyDeferralLimit", "1", defer), "0 now true User deferred the update. The defer count is now 0\n");
  EXPECT_EQ(end("disableDeferralLimit", "N/A", defer),
            "N/A now true User deferred the update (No deferral limit is configured)\n");
  const auto die = [](Vorlu& run) { recordAbnormalPromptExit(run, "137", PromptDeath::countsAsDeferral); };
  EXPECT_EQ(end("specifyDeferralLimit", "2", die),
            "1 now true The update prompt quit unexpectedly with exit code 137. The defer count is now 1\n");
  EXPECT_EQ(messages(), (Lines{"Error: The update prompt quit unexpectedly. Exit code: 137", "Exiting."}));
  EXPECT_EQ(end("disableDeferralLimit", "N/A", die),
            "N/A now true The update prompt quit unexpectedly with exit code 137.\n");
  const auto dieInSelfService = [](Vorlu& run) { recordAbnormalPromptExit(run, "", PromptDeath::countsNothing); };
  EXPECT_EQ(end("specifyDeferralLimit", "1", dieInSelfService),
            "1 then true The update prompt quit unexpectedly with exit code .\n");
}

}  // namespace
}  // namespace vorlu::test
