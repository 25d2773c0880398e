#include "tests/unit/install/install_run.h"

#include <fmt/format.h>

#include "vorlu/detection/installed_version.h"
#include "vorlu/state/encoding.h"

namespace vorlu::test {
namespace {

void field(std::string& header, std::size_t at, const std::string& value) {
  header.replace(at, value.size(), value);
}

std::string padded(std::string block) {
  block.resize((block.size() + 511) / 512 * 512, '\0');
  return block;
}

}  // namespace

std::string tarOf(const std::vector<Member>& members) {
  std::string archive;
  for (const Member& member : members) {
    std::string header(512, '\0');
    field(header, 0, member.name);
    field(header, 100, fmt::format("{:07o}", member.mode));
    field(header, 108, "0000000");
    field(header, 116, "0000000");
    field(header, 124, fmt::format("{:011o}", member.content.size()));
    field(header, 136, "14000000000");
    field(header, 148, "        ");
    header[156] = member.type;
    field(header, 157, member.link);
    field(header, 257, std::string("ustar\0", 6) + "00");
    unsigned sum = 0;
    for (const char c : header) sum += static_cast<unsigned char>(c);
    field(header, 148, fmt::format("{:06o}", sum));
    header[154] = '\0';
    archive += header + padded(member.content);
  }
  return archive + std::string(1024, '\0');
}

std::string appArchive(const std::string& bundleName, const std::string& version) {
  const std::string plist = plistOf("<key>CFBundleShortVersionString</key><string>" + version + "</string>");
  return tarOf({{bundleName + "/", "", '5', "", 0755},
                {bundleName + "/Contents/", "", '5', "", 0755},
                {bundleName + "/Contents/Info.plist", plist},
                {bundleName + "/Contents/MacOS/", "", '5', "", 0755},
                {bundleName + "/Contents/MacOS/run", "#!/bin/sh\n", '0', "", 0755},
                {bundleName + "/Contents/Link", "", '2', "MacOS/run"}});
}

InstallRun::InstallRun(bool realTar)
    : server([this](const refserver::Request& request) {
        const auto answer = answers.find(request.path);
        return answer == answers.end() ? reply(404, "not here") : answer->second;
      }) {
  mac.makeFolder(paths::output);
  mac.files.freeDisk = 200'000'000'000;
  if (realTar) mac.processes.passThrough("/usr/bin/tar", "/usr/bin/bsdtar", paths::run, mac.root());
}

AppBlueprints& InstallRun::addToCatalog(const std::string& appName) {
  AppBlueprints entry;
  entry.appName = appName;
  entry.appIdentifier = "id." + appName;
  entry.serverName = "server." + appName;
  entry.latestVersion = "2.0";
  entry.latestVersionMethod = "CFBundleShortVersionString";
  entry.appType = "appBundle";
  entry.architecture = "Universal";
  entry.verifySignature = false;
  entry.downloadFileType = "zip";
  entry.universalDownloadURL = server.url(fmt::format("/{}.zip", vorlu.catalog.entries.size()));
  entry.appPath = pathOf(appName);
  entry.sourceItems = Strings{appName + ".app"};
  entry.destinationPath = "/Applications";
  entry.owner = "";
  entry.group = "";
  entries[appName] = vorlu.catalog.entries.size();
  vorlu.catalog.entries.reserve(20);  // entries stay where they are
  vorlu.catalog.entries.push_back(entry);
  serve(vorlu.catalog.entries.back(), appArchive(appName + ".app", "2.0"));
  return vorlu.catalog.entries.back();
}

void InstallRun::serve(AppBlueprints& entry, const std::string& body) {
  answers[fmt::format("/{}.zip", entries.at(*entry.appName))] = reply(200, body);
  entry.universalInstallerHash = sha256(body);
}

void InstallRun::install(const std::string& appName) {
  mac.addApplication(pathOf(appName), "com.example." + appName, "1.0");
}

InstallRequest InstallRun::updateOf(const std::string& appName) const {
  InstallRequest request;
  request.appName = appName;
  request.installedPath = pathOf(appName);
  request.installedVersion = "1.0";
  request.operationLabel = "update";
  request.recordFailure = true;
  request.checkRunning = true;
  return request;
}

std::string InstallRun::installedVersion(const std::string& appName) {
  return readInstalledVersion(vorlu, {"CFBundleShortVersionString", pathOf(appName), "", "", ""});
}

Strings InstallRun::leftovers() {
  return joined(cachedFiles(), *mac.files.list(paths::output));
}

std::string InstallRun::sha256(const std::string& body) {
  return hexEncode(mac.security.sha256(body));
}

Lines linesOfUpdate(const std::string& appName, const std::string& hash) {
  const auto line = [&](const char* text) { return fmt::format(fmt::runtime(text), appName); };
  return {"Preventing idle sleep...",
          line("Checking for sufficient disk space for the {} update..."),
          line("Sufficient free disk space for the {} update"),
          "Checking macOS version requirements...",
          line("Downloading universal {} installer..."),
          "Download complete",
          line("Checking if {} is running...."),
          line("{} is not running. Continuing..."),
          line("Extracting {}-v2.0.zip..."),
          "Extraction complete",
          fmt::format("Downloaded installer hash: {}", hash),
          "The installer hash matches the expected sha256 hash. Continuing...",
          line("{} was successfully updated from version 1.0 to 2.0"),
          "Removing downloads...",
          "Allowing idle sleep..."};
}

}  // namespace vorlu::test
