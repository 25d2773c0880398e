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
  const std::string unread = "Could not read the deferral count", switching = "Switching deferral mode...",
                    fresh = "An update deferral limit was not previously specified";
  // option, stored count, state afterwards, deferrals left, first line
  const std::tuple<std::string, std::optional<std::string>, std::string, int, std::string> cases[] = {
      {"specifyDeferralLimit", std::nullopt, "2 now false", 2, unread},
      {"specifyDeferralLimit", "N/A", "2 then false", 2, fresh},
      {"specifyDeferralLimit", "", "2 then false", 2, fresh},
      {"specifyDeferralLimit", "1", "1 then true", 1, "A deferral limit of 2 has been configured for any"},
      {"specifyDeferralLimit", "-1", "-1 then true", -1, "A deferral limit of 2 has been configured for any"},
      {"specifyDeferralLimit", "two", "2 now false", 2, unread},
      {"disableDeferralLimit", "1", "N/A now false", 0, switching},
      {"disableDeferralLimit", "N/A", "N/A then true", 0, "Deferrals have been configured with no Deferral Limit"},
      {"disableDeferrals", "1", "N/A now false", 0, switching},
      {"disableDeferrals", std::nullopt, "- then true", 2, "Deferrals have been disabled for any pending updates."},
  };
  for (const auto& [option, stored, after, left, line] : cases) {
    Vorlu run(mac.platform(), site);
    configure(option);
    storeCount(stored);
    messages();
    prepareDeferralState(run);
    EXPECT_EQ(fmt::format("{} {}", state(), run.runData.deferCountRemaining().value_or(0)),
              fmt::format("{} {}", after, left))
        << option << stored.value_or("absent");
    EXPECT_THAT(messages().front(), testing::StartsWith(line));
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

}  // namespace
}  // namespace vorlu::test
