#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/reporting/encrypt_report.h"
#include "vorlu/reporting/report_data.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"

namespace vorlu::e2e {
namespace {

const char* preferences = R"(<plist version="1.0"><dict><key>GeneralOptions</key><dict>
  <key>autoUpdate</key><false/><key>publicKey</key><string>{}</string></dict></dict></plist>)";
const char* runData = R"(<plist version="1.0"><dict><key>LastRun</key><integer>1772452800</integer><key>DeferCount</key>
  <string>1</string><key>LastCompliant</key><string>Jan 02 2026 03:04:05 +0000</string></dict></plist>)";
const char* errors = R"({"vorluErrors": [{"timeStamp": "then", "message": "Error: \"quoted\" \u0001 ü"}],
  "vorluWarnings": [{"timeStamp": "now", "message": "Warning: null, N/A"}]})";
const char* expected = R"({"ComputerRecord": {"customerName": "Example", "serialNumber": "C02SIM00001",
  "computerName": "Sim Mac", "modelNumber": "MacBook Pro", "architecture": "Apple M3", "osVersion": "14.5.0",
  "diskCapacity": "500 GB", "freeDiskSpace": "200 GB", "filevaultEnabled": true, "gatekeeperEnabled": false,
  "sipEnabled": true, "lastUser": "alice", "lastUserFullName": "Alice Example", "lastCheckin": "",
  "selfUpdatesEnabled": false, "backgroundUpdatesEnabled": true, "promptsEnabled": true, "vorluVersion": "1.4.0",
  "lastPrompt": "Mar 02 2026 12:00:00 +0000", "nextPrompt": "Mar 09 2026 12:00:00 +0000",
  "lastRunStatus": "Updates pending", "deferralsAllowed": true, "deferralLimit": "2", "deferralsRemaining": "1",
  "lastCompliant": "Jan 02 2026 03:04:05 +0000", "AppInventory": [{"appName": "Diä “Show” 日本",
  "appIdentifier": "Diä “Show” 日本-id", "installedPath": "/Applications/Diä “Show” 日本.app", "installedVersion": "1.0",
  "updateCached": false, "updatesAllowed": true}],
  "ErrorLog": [{"timeStamp": "then", "errorMessage": "Error: \"quoted\" \u0001 ü"}],
  "WarningLog": [{"timeStamp": "now", "warningMessage": "Warning: null, N/A"}]}})";

using Report = SimulatedMacTest;

Outcome server(const std::string& arguments) {
  return runOnMachine({"/bin/sh", "-c", builtFile("refserver/vorlu-server") + " " + arguments});
}

/// What the openssl command makes of a sealed report in `folder`, which holds private.pem.
std::string openedByOpenssl(const std::string& folder, const EncryptedJson& sealed) {
  test::writeFile(folder + "/key", *hexDecode(sealed.aes_key_encrypted_hex));
  test::writeFile(folder + "/data", *hexDecode(sealed.encrypted_data_hex));
  const char* line =
      "cd {} && openssl pkeyutl -decrypt -inkey private.pem -in key -pkeyopt rsa_padding_mode:oaep -pkeyopt "
      "rsa_oaep_md:sha512 -pkeyopt rsa_mgf1_md:sha512 -out aes && openssl enc -d -aes-256-cbc -in data -iv {} -K "
      "$(od -An -v -tx1 aes | tr -d ' \\n')";
  return runOnMachine({"/bin/sh", "-c", fmt::format(fmt::runtime(line), folder, sealed.iv_hex)}).output;
}

TEST_F(Report, TheOwnerReadsWhatTheMacIs) {
  const test::TemporaryFolder folder;
  AppServer shelf;
  shelf.setCatalog({entryOf("Diä “Show” 日本", "2.0", "zip", "absent.zip", "")});
  const std::string key = folder / "/private.pem";
  const std::string publicKey = server("keygen --out " + key).output;
  SimulatedMac mac;
  mac.addApplication("Diä “Show” 日本", "1.0", "com.example.slides");
  mac.setHost("gatekeeper", "false");
  mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
            fmt::format(fmt::runtime(preferences), publicKey.substr(0, publicKey.find('\n'))));
  mac.write(paths::runData, runData);
  mac.write(paths::errors, errors);
  mac.boot();
  const Outcome run = mac.shell("vorlu --report submit");
  const auto sent = decodeJson<EncryptedJson>(mac.read(paths::lastReportEnc));
  ASSERT_TRUE(sent) << run.output;
  EXPECT_EQ(openedByOpenssl(folder.path(), *sent), mac.read(paths::lastReport));
  const std::string id = server("report list --data " + shelf.dataFolder()).output.substr(0, 12);
  const Outcome shown = server(fmt::format("report show {} --key {} --data {}", id, key, shelf.dataFolder()));
  auto report = decodeJson<ReportData>(shown.output);
  ASSERT_TRUE(report) << shown.output;
  auto known = decodeJson<ReportData>(expected);
  known->ComputerRecord->lastCheckin = report->ComputerRecord->lastCheckin;
  EXPECT_EQ(encodeJson(*report, JsonLayout::pretty), encodeJson(*known, JsonLayout::pretty));
  EXPECT_THAT(*known->ComputerRecord->lastCheckin, testing::ContainsRegex("^[A-Z][a-z]+ [0-9: ]+ [+]0000$"));

  server("keygen --out " + key + ".other");
  EXPECT_EQ(server(fmt::format("report show {} --key {}.other --data {}", id, key, shelf.dataFolder())).output,
            "vorlu-server: the report isn't for this key, or its wrapped AES key is damaged\n");
}

}  // namespace
}  // namespace vorlu::e2e
