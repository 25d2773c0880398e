#include "ctl/lint/entry_builds.h"

#include "vorlu/detection/letter_case.h"

namespace vorlu::ctl {
namespace {

enum class Builds { universal, perProcessor, unknown };

Builds buildsOf(const AppBlueprints& app) {
  const std::string& architecture = orEmpty(app.architecture);
  if (isInAnyCase(architecture, "universal")) return Builds::universal;
  return isInAnyCase(architecture, "arch") ? Builds::perProcessor : Builds::unknown;
}

}  // namespace

BuildFields universalFields(const AppBlueprints& app) {
  return {"universal",
          "universalDownloadURL",
          app.universalDownloadURL,
          "universalDownloadURLCode",
          orEmpty(app.universalDownloadURLCode),
          "javascriptScrapeUniversalRegex",
          orEmpty(app.javascriptScrapeUniversalRegex),
          "universalInstallerHash",
          orEmpty(app.universalInstallerHash)};
}

BuildFields intelFields(const AppBlueprints& app) {
  return {"Intel",
          "intelDownloadURL",
          app.intelDownloadURL,
          "intelDownloadURLCode",
          orEmpty(app.intelDownloadURLCode),
          "javascriptScrapeIntelRegex",
          orEmpty(app.javascriptScrapeIntelRegex),
          "intelInstallerHash",
          orEmpty(app.intelInstallerHash)};
}

BuildFields siliconFields(const AppBlueprints& app) {
  return {"Apple Silicon",
          "appleSiliconDownloadURL",
          app.appleSiliconDownloadURL,
          "siliconDownloadURLCode",
          orEmpty(app.siliconDownloadURLCode),
          "javascriptScrapeSiliconRegex",
          orEmpty(app.javascriptScrapeSiliconRegex),
          "siliconInstallerHash",
          orEmpty(app.siliconInstallerHash)};
}

std::vector<BuildFields> wantedBuilds(const AppBlueprints& app) {
  switch (buildsOf(app)) {
    case Builds::universal:
      return {universalFields(app)};
    case Builds::perProcessor:
      return {intelFields(app), siliconFields(app)};
    case Builds::unknown:
      break;
  }
  return {};
}

std::vector<BuildFields> unusedBuilds(const AppBlueprints& app) {
  switch (buildsOf(app)) {
    case Builds::universal:
      return {intelFields(app), siliconFields(app)};
    case Builds::perProcessor:
      return {universalFields(app)};
    case Builds::unknown:
      break;
  }
  return {};
}

}  // namespace vorlu::ctl
