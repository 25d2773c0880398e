#include "tests/e2e/app_server.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "refserver/host_clock.h"
#include "refserver/sample_data.h"
#include "seal/keys.h"
#include "seal/site_file.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/json.h"
#include "vorlu/state/replacement.h"

namespace vorlu::e2e {
namespace {

constexpr int port = 8642;  // what the site of the tests names

std::string baseUrl() {
  return fmt::format("http://127.0.0.1:{}", port);
}

/// The digest with which a program's output begins.
std::string digestBy(const std::vector<std::string>& command) {
  const Outcome outcome = runOnMachine(command);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  return outcome.output.substr(0, 64);
}

}  // namespace

AppServer::AppServer(const Hook& hook, const std::string& hostFile) {
  EXPECT_TRUE(refserver::makeSampleData(folder_.path(), baseUrl()).ok());
  refserver::ServerConfig config{folder_.path(), *seal::readSiteFile(VORLU_SITE_FILE),
                                 std::move(*seal::readServerKeys(VORLU_SITE_KEYS))};
  config.port = port;
  config.hook = hook;
  if (!hostFile.empty()) config.clock = refserver::hostClock(hostFile);
  server_.emplace(std::move(config));
  const auto started = server_->start();
  EXPECT_TRUE(started.ok()) << (started.ok() ? "" : started.error());
}

std::string AppServer::make(const std::string& name, const std::string& version,
                            const std::vector<std::string>& options) {
  std::vector<std::string> command = {sourceFile("simulator/make-app"),
                                      name,
                                      version,
                                      "com.example." + replacedAll(name, " ", ""),
                                      "--out",
                                      shelf_.path()};
  command.insert(command.end(), options.begin(), options.end());
  const Outcome made = runOnMachine(command);
  EXPECT_EQ(made.status, 0) << made.output;
  return fmt::format("{}/{}.app", shelf_.path(), name);
}

std::string AppServer::pack(const std::string& type, const std::string& file,
                            const std::vector<std::string>& contents) {
  std::vector<std::string> command = {sourceFile("simulator/make-installer"), type, folder_ / ("/files/" + file)};
  command.insert(command.end(), contents.begin(), contents.end());
  return digestBy(command);
}

std::string AppServer::serve(const std::string& file, const std::string& bytes) {
  const std::string path = folder_ / ("/files/" + file);
  test::writeFile(path, bytes);
  return digestBy({"sha256sum", path});
}

void AppServer::setCatalog(const std::vector<AppBlueprints>& entries) {
  test::writeFile(folder_ / "/catalog.json", encodeJson(entries, JsonLayout::pretty));
}

void AppServer::setManifest(const std::string& json) {
  test::writeFile(folder_ / "/manifest.json", json);
}

void AppServer::setTestingCatalog(const std::vector<AppBlueprints>& entries) {
  test::writeFile(folder_ / "/testing.json", encodeJson(entries, JsonLayout::pretty));
}

std::string AppServer::urlOf(const std::string& file) {
  return fmt::format("{}/files/{}", baseUrl(), file);
}

AppBlueprints entryOf(const std::string& name, const std::string& latest, const std::string& type,
                      const std::string& file, const std::string& hash) {
  AppBlueprints app;
  app.appName = name;
  app.appIdentifier = name + "-id";
  app.serverName = name + "-server";
  app.legacyServerName = name + "-legacy";
  app.latestVersion = latest;
  app.latestVersionMethod = "CFBundleShortVersionString";
  app.appType = "appBundle";
  app.architecture = "universal";
  app.universalDownloadURL = AppServer::urlOf(file);
  app.downloadFileType = type;
  app.appPath = fmt::format("/Applications/{}.app", name);
  app.sourceItems = {name + ".app"};
  app.destinationPath = "/Applications";
  if (hash.empty()) {
    app.expectedCodeSignature = "Example Corp (EXMPL12345)";
  } else {
    app.verifySignature = false;
    app.universalInstallerHash = hash;
  }
  return app;
}

std::string versionOf(const std::string& bundle) {
  const std::string info = test::readFile(bundle + "/Contents/Info.plist");
  const std::string head = "<key>CFBundleShortVersionString</key><string>";
  const std::size_t start = info.find(head);
  return start == std::string::npos
             ? ""
             : info.substr(start + head.size(), info.find('<', start + head.size()) - start - head.size());
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& item : std::filesystem::directory_iterator(folder)) names.push_back(item.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace vorlu::e2e
