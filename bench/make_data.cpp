// Makes the data of the update check benchmark: a catalog of N entries with all their fields, and a bundle for every
// second entry, half of the Info.plist files binary.
//
//   bench-data CATALOG.json ROOT N      (ROOT is the root folder of the simulated Mac)

#include <fmt/format.h>
#include <plist/plist.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "vorlu/server/blueprint.h"
#include "vorlu/state/json.h"

namespace {

using namespace vorlu;

AppBlueprints entry(int number) {
  const std::string filler = fmt::format("value {} of a field that nothing in this benchmark looks at", number);
  AppBlueprints app;
#define BLUEPRINT_TEXT(name, ifAbsent, ...) app.name = filler;
#define BLUEPRINT_BOOL(name, ifAbsent, ...) app.name = ifAbsent;
#define BLUEPRINT_INT(name, ifAbsent, ...) app.name = ifAbsent;
#define BLUEPRINT_LIST(name, ...) app.name = std::vector<std::string>{};
#include "vorlu/server/blueprint_fields.def"
  const std::string name = fmt::format("Bench App {}", number);
  app.appName = name;
  app.appIdentifier = fmt::format("bench-app-{}", number);
  app.serverName = fmt::format("benchapp{}", number);
  app.legacyServerName = fmt::format("bench{}", number);
  app.latestVersion = fmt::format("{}.{}", number % 40, number % 7);
  app.latestIntelVersion = "";
  app.latestSiliconVersion = "";
  app.latestVersionMethod = "CFBundleShortVersionString";
  app.infoPlistPath = "";
  app.appType = "appBundle";
  app.architecture = "universal";
  app.universalDownloadURL = fmt::format("https://downloads.example.com/{}.zip", number);
  app.downloadFileType = "zip";
  app.appPath = fmt::format("/Applications/{}.app", name);
  app.alternatePaths = {fmt::format("/Applications/Utilities/{}.app", name)};
  app.appPrefixName = "";
  app.prefixSearchPath = "";
  app.sourceItems = {name + ".app"};
  app.requiredApps = {filler, filler};
  app.description = std::string(900, 'd');
  return app;
}

void writeBundle(const std::filesystem::path& bundle, const AppBlueprints& app, bool binary) {
  std::filesystem::create_directories(bundle / "Contents/MacOS");
  plist_t info = plist_new_dict();
  plist_dict_set_item(info, "CFBundleIdentifier", plist_new_string(("com.example." + *app.appIdentifier).c_str()));
  plist_dict_set_item(info, "CFBundleShortVersionString", plist_new_string(app.latestVersion->c_str()));
  plist_dict_set_item(info, "CFBundleVersion", plist_new_string("100"));
  for (int key = 0; key < 25; ++key) {
    plist_dict_set_item(info, fmt::format("BenchKey{}", key).c_str(), plist_new_string("some text of a usual length"));
  }
  char* data = nullptr;
  uint32_t length = 0;
  binary ? plist_to_bin(info, &data, &length) : plist_to_xml(info, &data, &length);
  std::ofstream(bundle / "Contents/Info.plist", std::ios::binary).write(data, length);
  std::free(data);
  plist_free(info);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: bench-data CATALOG.json ROOT N\n", stderr);
    return 2;
  }
  const int count = std::atoi(argv[3]);
  std::vector<AppBlueprints> catalog;
  for (int number = 0; number < count; ++number) {
    catalog.push_back(entry(number));
    if (number % 2 == 0) {
      writeBundle(std::filesystem::path(argv[2] + *catalog.back().appPath), catalog.back(), number % 4 == 0);
    }
  }
  std::ofstream(argv[1], std::ios::binary) << encodeJson(catalog, JsonLayout::compact);
  return 0;
}
