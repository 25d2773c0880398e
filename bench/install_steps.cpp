// The two heavy steps of an install, by the agent's own code on a Mac whose root folder is given.
//
//   bench-install download ROOT URL      into the cache, with its digest, which is printed
//   bench-install place ROOT ARCHIVE APP unpacks the archive and places APP in /Applications

#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <vector>

#include "vorlu/install/archive.h"
#include "vorlu/install/download.h"
#include "vorlu/install/placement.h"
#include "vorlu/platform/linux/linux_platform.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace {

using namespace vorlu;

int download(Vorlu& vorlu, const std::string& url) {
  vorlu.platform.files.createDirectory(paths::downloads, {0755, "root", "wheel"});
  const auto digest = downloadFile(vorlu, true, {url, paths::downloads + "/Bench.zip", "", ""});
  if (digest) fmt::print("{}\n", digest->sha256);
  return digest ? 0 : 1;
}

int place(Vorlu& vorlu, const std::string& archive, const std::string& app) {
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

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const bool isDownload = words.size() == 3 && words[0] == "download";
  if (!isDownload && !(words.size() == 4 && words[0] == "place")) {
    std::fputs("usage: bench-install download ROOT URL | place ROOT ARCHIVE APP\n", stderr);
    return 2;
  }
  LinuxPlatform platform(words[1]);
  const Site site(sealedSite, platform.platform().security);
  Vorlu run(platform.platform(), site);
  return isDownload ? download(run, words[2]) : place(run, words[2], words[3]);
}
