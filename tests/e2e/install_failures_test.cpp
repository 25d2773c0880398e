#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"

namespace vorlu::e2e {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

/// What is wrong with one app's update, and the end of what the log says of it.
struct FailureCase {
  const char* app;
  const char* type;
  std::function<void(AppBlueprints&)> spoil;
  Texts lastLines;  ///< before the Mac may sleep; "{}" stands for the app
};

const std::string removing = "Removing downloads...";
const Texts detached = {"Detaching disk image...", "\"disk4\" ejected.", removing};
const Texts notFound = {"Error: No valid installers were found for {}",
                        "Please contact support@example.com for further assistance"};
const Texts otherSigner = {
    "Found signature: Example Corp (EXMPL12345)",
    "Error: The signing information for {} does not match the expected signing info. Cancelling the update"};
const Texts unchanged = {"Error: The {} version has not changed since the update attempt. Version installed: 1.0",
                         removing};

Texts joined(Texts first, const Texts& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

/// The end of a download that fails each time for the same reason. "@" stands for the URL.
Texts unreachable(const std::string& file, const std::string& reason) {
  return {"The {} download failed. Retrying (attempt 20 of 20)", "Downloading universal {} installer...",
          replacedAll(reason, "@", AppServer::urlOf(file)),
          "Error: The {} installer could not be downloaded. Please ensure the network connection is stable and verify "
          "there are no network restrictions then retry the update"};
}

/// What the log says of each app, from the beginning of its update to its end.
std::map<std::string, Texts> messagesByApp(const std::string& log) {
  const std::string head = "Checking for sufficient disk space for the ";
  const std::string tail = " update...";
  std::map<std::string, Texts> messages;
  Texts* current = nullptr;
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    const std::string text = line.substr(line.find("]: ") + 3);
    if (text.starts_with(head)) current = &messages[text.substr(head.size(), text.size() - head.size() - tail.size())];
    if (current) current->push_back(text);
    if (text == "Allowing idle sleep...") current = nullptr;
  }
  return messages;
}

/// Everything about a bundle's files that an install would change.
std::string stateOf(const std::string& bundle) {
  return runOnMachine({"find", bundle, "-printf", "%P %i %T@ %m %s\n"}).output;
}

struct InstallFailures : SimulatedMacTest {};

TEST_F(InstallFailures, EachIsToldAndLeavesItsAppAndTheOthersAlone) {
  AppServer server([](const refserver::Request& request, refserver::Response& response) {
    if (request.path.ends_with("/cut")) response.fault.dropAfter = 4000;
    if (request.path.ends_with("/reset")) response.fault.noAnswer = true;
    if (request.path.ends_with("/broken")) response.status = 500;
    if (!request.path.ends_with("/circle")) return;
    response = {302, "text/plain", "", {{"Location", AppServer::urlOf("circle")}}, "", {}};
  });
  const auto set = [](auto field, const auto& value) { return [=](AppBlueprints& app) { app.*field = value; }; };
  const auto serving = [&](const std::string& file, const std::string& bytes) {
    return [&server, file, bytes](AppBlueprints& app) {
      app.universalInstallerHash = server.serve(file, bytes);
      app.universalDownloadURL = AppServer::urlOf(file);
    };
  };
  const auto signedByOther = [](AppBlueprints& app) {
    app.verifySignature = true;
    app.expectedCodeSignature = "Other Corp (OTHER12345)";
    app.nestedDownloadFiles = {*app.appName + ".pkg"};
  };
  const std::string notBegun = "Could not initiate download from URL @. Response: ";
  const FailureCase cases[] = {
      {"Gone", "zip", set(&AppBlueprints::universalDownloadURL, AppServer::urlOf("gone")),
       unreachable("gone", "Could not download file from URL @. Status code: 404")},
      {"Broken", "zip", serving("broken", "x"),
       unreachable("broken", "Could not download file from URL @. Status code: 500")},
      {"Cut", "zip", serving("cut", std::string(9000, 'x')),
       unreachable("cut", notBegun + "transfer closed with 5000 bytes remaining to read (@)")},
      {"Reset", "zip", serving("reset", "x"), unreachable("reset", notBegun + "Empty reply from server (@)")},
      {"Circle", "zip", serving("circle", "x"), unreachable("circle", notBegun + "too many redirects (@)")},
      {"Damaged",
       "dmg",
       serving("damaged", "no image"),
       {"Error mounting disk image: Attach failed - image not recognized",
        "Please ensure disk image mounting is not restricted and try again", "Extracting Damaged-v2.0.dmg...",
        "Error: Could not mount disk image for {}. The update could not be processed", removing}},
      {"Lawless",
       "dmgWithEULA",
       serving("lawless", "no image"),
       {"Error: Disk image could not be converted to a mountable format"}},
      {"Torn", "pkg", serving("torn", "no package"),
       joined({"The install failed. (The package “Torn-v2.0.pkg” is damaged and can’t be opened.)"}, unchanged)},
      {"Stranger", "pkg", signedByOther, joined(otherSigner, {"Removing downloaded items..."})},
      {"Strange Nest", "pkgInDMG", signedByOther, joined(otherSigner, detached)},
      {"Strange App", "dmg", signedByOther, joined(otherSigner, detached)},
      {"Tampered", "dmg", set(&AppBlueprints::universalInstallerHash, "0"),
       joined({"Cancelling the update"}, detached)},
      {"Empty Parcel", "pkgInZIP", set(&AppBlueprints::nestedDownloadFiles, Texts{"missing.pkg"}),
       joined(notFound, {removing})},
      {"Half Full", "dmgInZIP", set(&AppBlueprints::nestedDownloadFiles, Texts{"Half Full.dmg", "missing.dmg"}),
       joined(notFound, detached)},
      {"Pattern", "dmg", set(&AppBlueprints::sourceItems, Texts{"REGEX:("}), joined(notFound, detached)},
      {"Nowhere", "zip", set(&AppBlueprints::destinationPath, "/"),
       joined({"Error: Could not copy " + paths::output + "/Nowhere.app - //Nowhere.app is a top-level folder"},
              unchanged)},
  };

  SimulatedMac mac;
  std::vector<AppBlueprints> catalog;
  const auto offer = [&](const std::string& name, const std::string& type) -> AppBlueprints& {
    const std::string file = std::to_string(catalog.size());
    const std::string hash = server.pack(type, file, {server.make(name, "2.0")});
    mac.addApplication(name, "1.0", "com.example." + file);
    return catalog.emplace_back(entryOf(name, "2.0", type, file, hash));
  };
  const Texts good = {"Präsentation \"1\" $HOME", "a;b's `id` & (c) 😀"};
  const auto offerGood = [&](const std::string& name) {
    AppBlueprints& app = offer(name, "zip");
    app.preInstallScript = "echo before; ls /nowhere 2>/dev/null";
    app.postInstallScript = "if then";
  };
  offerGood(good[0]);
  for (const FailureCase& c : cases) c.spoil(offer(c.app, c.type));
  offerGood(good[1]);
  server.setCatalog(catalog);
  mac.boot();

  const auto bundleOf = [&](const std::string& name) { return mac.path(fmt::format("/Applications/{}.app", name)); };
  std::map<std::string, std::string> before;
  for (const FailureCase& c : cases) before[c.app] = stateOf(bundleOf(c.app));
  EXPECT_EQ(mac.run({"/usr/local/bin/vorlu", "--update", "check"}).status, 0);
  auto messages = messagesByApp(mac.read("/private/var/log/Vorlu.log"));
  for (const FailureCase& c : cases) {
    Texts expected;
    for (const std::string& line : c.lastLines) expected.push_back(replacedAll(line, "{}", c.app));
    expected.emplace_back("Allowing idle sleep...");
    Texts& told = messages[c.app];
    EXPECT_GE(told.size(), expected.size()) << c.app;
    told.erase(told.begin(), told.end() - static_cast<std::ptrdiff_t>(std::min(told.size(), expected.size())));
    EXPECT_EQ(told, expected) << c.app;
    EXPECT_EQ(stateOf(bundleOf(c.app)), before[c.app]) << c.app;
  }
  const auto anonymous = [&](const AppBlueprints& app) {
    std::string all = fmt::format("{}", fmt::join(messages[*app.appName], "\n"));
    for (const std::string& own : {*app.appName, replacedAll(*app.appName, " ", ""), *app.universalInstallerHash})
      all = replacedAll(all, own, "{}");
    return all;
  };
  for (const std::string& name : good) EXPECT_EQ(versionOf(bundleOf(name)), "2.0") << name;
  EXPECT_EQ(messages[good[0]].size(), 18U);
  EXPECT_EQ(anonymous(catalog.back()), anonymous(catalog.front()))
      << "something of the apps between has reached the last one";
  EXPECT_THAT(namesIn(mac.path(paths::output)), IsEmpty());
  EXPECT_THAT(namesIn(mac.path(paths::downloads)), ElementsAre("Lawless-v2.0.dmg"));
  EXPECT_THAT(namesIn(mac.path("/Volumes")), IsEmpty());
  EXPECT_EQ(namesIn(mac.path("/Applications")).size(), std::size(cases) + good.size());
}

}  // namespace
}  // namespace vorlu::e2e
