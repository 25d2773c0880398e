// The heavy steps of a run, by the agent's own code on a Mac whose root folder is given.
//
//   bench-steps decode ROOT CATALOG     the catalog into its records
//   bench-steps versions ROOT LIST      the version of each bundle whose path is a line of LIST
//   bench-steps scripts ROOT SCRIPT N   a version script's output, N times
//   bench-steps download ROOT URL       into the cache, with its digest, which is printed
//   bench-steps place ROOT ARCHIVE APP  unpacks the archive and places APP in /Applications

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/installed_version.h"
#include "vorlu/install/archive.h"
#include "vorlu/install/download.h"
#include "vorlu/install/placement.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace {

using namespace vorlu;

using Words = std::vector<std::string>;

int decode(Vorlu& vorlu, const Words& words) {
  auto text = vorlu.platform.files.read(words[0]);
  if (!text) return 1;
  const auto entries = decodeCatalog(std::move(*text));
  if (entries) fmt::print("{} entries\n", entries->size());
  return entries ? 0 : 1;
}

int versions(Vorlu& vorlu, const Words& words) {
  const auto list = vorlu.platform.files.read(words[0]);
  if (!list) return 1;
  std::istringstream lines(*list);
  std::size_t bytes = 0;
  VersionSource source;
  source.method = "CFBundleShortVersionString";
  while (std::getline(lines, source.path)) bytes += readInstalledVersion(vorlu, source).size();
  fmt::print("{} bytes of versions\n", bytes);
  return bytes > 0 ? 0 : 1;
}

int scripts(Vorlu& vorlu, const Words& words) {
  std::size_t bytes = 0;
  for (int left = std::atoi(words[1].c_str()); left > 0; --left) bytes += runScriptForOutput(vorlu, words[0]).size();
  fmt::print("{} bytes of versions\n", bytes);
  return bytes > 0 ? 0 : 1;
}

int download(Vorlu& vorlu, const Words& words) {
  vorlu.platform.files.createDirectory(paths::downloads, {0755, "root", "wheel"});
  const auto digest = downloadFile(vorlu, true, {words[0], paths::downloads + "/Bench.zip", "", ""});
  if (digest) fmt::print("{}\n", digest->sha256);
  return digest ? 0 : 1;
}

int place(Vorlu& vorlu, const Words& words) {
  const auto& [archive, app] = std::pair(words[0], words[1]);
  vorlu.modes.standing = Standing::alone;
  vorlu.currentApp.destinationPath = "/Applications";
  vorlu.currentApp.setPermissions = true;
  vorlu.currentApp.owner = "root";
  vorlu.currentApp.group = "wheel";
  vorlu.currentApp.mode = 755;
  if (!extractArchive(vorlu, archive)) return 1;
  placeItems(vorlu, {{paths::output + "/" + app, app}}, true);
  return vorlu.platform.files.exists("/Applications/" + app) ? 0 : 1;
}

struct Step {
  const char* name;
  std::size_t arguments;
  int (*run)(Vorlu& vorlu, const Words& words);
};
constexpr std::array steps = {Step{"decode", 1, decode}, Step{"versions", 1, versions}, Step{"scripts", 2, scripts},
                              Step{"download", 1, download}, Step{"place", 2, place}};

}  // namespace

int main(int argc, char** argv) {
  const Words words(argv + 1, argv + argc);
  for (const Step& step : steps) {
    if (words.size() != step.arguments + 2 || words[0] != step.name) continue;
    LinuxPlatform platform(words[1]);
    const Site site(sealedSite, platform.platform().security);
    Vorlu run(platform.platform(), site);
    return step.run(run, {words.begin() + 2, words.end()});
  }
  std::fputs("usage: bench-steps STEP ROOT ARGUMENT…; its head tells the steps\n", stderr);
  return 2;
}
