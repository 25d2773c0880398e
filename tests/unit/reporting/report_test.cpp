#include "vorlu/reporting/report.h"
#include "tests/unit/server/server_fixture.h"
#include "vorlu/reporting/computer_facts.h"
#include "vorlu/reporting/encrypt_report.h"
#include "vorlu/reporting/report_lists.h"
#include "vorlu/reporting/update_facts.h"
#include "vorlu/state/encoding.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;

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

const std::string measuring = "zsh: networkQuality -s -v -c > /private/var/tmp/networkQuality.json";
const std::string success = "Successfully submitted reporting data";

class ReportFlow : public ServerFixture {
 protected:
  ReportFlow() {
    serveInventory(R"({"label": "reports", "url": ")" + base + R"(/reports", "token": "t"})");
    mac.processes.onPrefix("/usr/", {.output = "", .status = 1});
    mac.processes.on("zsh: su alice -c \"id -F\"", {.output = "Alice Example\n"});
    mac.processes.on(measuring, {});
    setPublicKey(base64Encode(agentKeys().agent.publicDer()));
  }
  void setPublicKey(const std::string& key) {
    mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
              plistOf("<key>GeneralOptions</key><dict><key>publicKey</key><string>" + key + "</string></dict>"));
  }
  /// Reports in a new run on fresh run data, and gives what was logged after the collecting.
  Lines report() {
    setRunData({});
    buildAndSubmitReport(newRunWithKeys());
    Lines lines = logged();
    EXPECT_EQ(runData().LastReport, static_cast<std::int64_t>(mac.clock.now()));
    const auto handOver = std::find(lines.begin(), lines.end(), "Attempting to submit report information...");
    return handOver == lines.end() ? lines : Lines(handOver + 1, lines.end());
  }
};

TEST_F(ReportFlow, AsksInOrderAndKeepsBothFilesForRootAlone) {
  mac.write(paths::errors, R"({"vorluErrors": [{"message": ")" + std::string(20000, 'x') + R"("}]})");
  EXPECT_THAT(report(), ElementsAre(success));
  EXPECT_EQ(runData().CurrentRunType, "ReportingAuto");
  const std::string profile = "/usr/sbin/system_profiler SPHardwareDataType";
  EXPECT_THAT(mac.processes.takeCommands(),
              ElementsAre(profile, "/usr/bin/fdesetup status", "/usr/sbin/spctl --status", "/usr/bin/csrutil status",
                          profile, measuring, "zsh: su alice -c \"id -F\""));
  for (const std::string& file : {paths::lastReport, paths::lastReportEnc})
    EXPECT_EQ(mac.files.info(file)->mode, 0600) << file;
  const auto first = decodeJson<EncryptedJson>(mac.read(paths::lastReportEnc));
  mac.consoleUser.user = "loginwindow";
  mac.files.remove(paths::lastReport);
  mac.makeFolder(paths::lastReport + "/in the way");
  EXPECT_THAT(report(), linesThatBegin({"Error writing to JSON file ", success}));
  EXPECT_EQ(runData().LastUser, std::nullopt);
  const auto second = decodeJson<EncryptedJson>(mac.read(paths::lastReportEnc));
  const auto keyOf = [](const EncryptedJson& sent) {
    return *agentKeys().agent.decrypt(*hexDecode(sent.aes_key_encrypted_hex));
  };
  EXPECT_NE(first->iv_hex, second->iv_hex);
  EXPECT_NE(keyOf(*first), keyOf(*second));
}

TEST_F(ReportFlow, EachAnswerHasItsLineAndStamp) {
  const std::tuple<int, const char*, std::string> cases[] = {
      {200, R"({"message": "1 row upserted successfully, thanks"})", success},
      {500, R"({"message": "no room"})", "Error: Failed to submit reporting data with server response - no room"},
      {401, "<html>who?</html>", "Error: Could not submit report data - dataCorrupted("},
      {200, R"({"message": 1})", "Error: Could not submit report data - typeMismatch("},
      {200, R"({"result": "ok"})", "Error: Failed to submit reporting data due to unknown error"}};
  for (const auto& [status, body, line] : cases) {
    answer("/reports", status, body);
    EXPECT_THAT(report(), linesThatBegin({line}));
    EXPECT_EQ(requests().size(), 1u) << "a failed report isn't tried again";
  }
  onRequest = [](const refserver::Request& request, refserver::Response& response) {
    response.fault.noAnswer = request.path == "/reports";
  };
  EXPECT_THAT(report(), ElementsAre("Warning: No data received from the request to submit reporting data."));
}

TEST_F(ReportFlow, WithoutAUsableKeyNothingIsSentOrWritten) {
  const std::string conversion = "Error: Could not convert reporting key - ";
  const std::pair<std::string, std::string> cases[] = {
      {"", "Error: a Public Key is required for reporting data but could not be found"},
      {"no Base64!", conversion + "invalidBase64String. Please ensure the configued Vorlu public key is valid"},
      {base64Encode("no key"), conversion},
      {base64Encode(seal::RsaKey::generate(1024).publicDer()),
       "Error: Could not submit reporting data - Error Domain"}};
  for (const auto& [key, line] : cases) {
    setPublicKey(key);
    EXPECT_THAT(report(), linesThatBegin({line}));
    EXPECT_TRUE(requests().empty() && !mac.exists(paths::lastReport) && !mac.exists(paths::lastReportEnc)) << key;
  }
}

TEST_F(ReportFlow, RecurringRunReportsAfterWorkOrWhenItIsDue) {
  mac.write(paths::jamf, "");
  mac.processes.on("zsh: /usr/local/jamf/bin/jamf recon", {});
  const Lines both = {success, "Running Jamf Pro inventory update..."};
  const std::tuple<bool, bool, std::int64_t, Lines> cases[] = {
      {true, false, 5009, both}, {false, true, 5009, both}, {false, false, 4999, {success}}, {false, false, 5000, {}}};
  for (const auto& [checked, updated, due, lines] : cases) {
    Vorlu& vorlu = newRunWithKeys();
    vorlu.runData.now = 5000;
    std::tie(vorlu.updates.hourlyCheckRan, vorlu.updates.updatesRan) = std::tie(checked, updated);
    reportStep(vorlu, due);
    EXPECT_EQ(lines.empty() ? logged() : lastOf(logged(), lines.size()), lines) << due;
  }
}

}  // namespace
}  // namespace vorlu::test
