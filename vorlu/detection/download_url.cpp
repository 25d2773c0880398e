#include "vorlu/detection/download_url.h"

#include <fmt/format.h>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/web_scraper.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// What the catalog tells of one build.
struct BuildFields {
  std::string_view caseWord;
  const std::string& fixedURL;
  const std::string& script;
  const std::string& regex;
};

BuildFields fieldsOf(const CurrentApp& app, DownloadCase build) {
  switch (build) {
    case DownloadCase::intel:
      return {"Intel", app.intelDownloadURL, app.intelDownloadURLCode, app.javascriptScrapeIntelRegex};
    case DownloadCase::appleSilicon:
      return {"Apple Silicon", app.appleSiliconDownloadURL, app.siliconDownloadURLCode,
              app.javascriptScrapeSiliconRegex};
    case DownloadCase::universal:
      break;
  }
  return {"universal", app.universalDownloadURL, app.universalDownloadURLCode, app.javascriptScrapeUniversalRegex};
}

}  // namespace

std::optional<std::string> resolveDownloadURL(Vorlu& vorlu, DownloadCase build) {
  const CurrentApp& app = vorlu.currentApp;
  const BuildFields fields = fieldsOf(app, build);
  if (app.specifyDownloadURL) return fields.fixedURL;
  vorlu.log(fmt::format("Obtaining {} {} download URL...", fields.caseWord, app.appName));
  std::string url;
  if (!app.javascriptScrapeURL.empty()) {
    url = scrapeDownloadURL(vorlu, app.javascriptScrapeURL, fields.regex).value_or("");
  } else if (!fields.script.empty()) {
    url = runScriptForOutput(vorlu, fields.script);
  } else {
    vorlu.log(fmt::format("Error: Could not obtain download information for {}", app.appName));
    return std::nullopt;
  }
  if (url.empty()) {
    vorlu.log(fmt::format("Error: Could not obtain {} download URL for {}", fields.caseWord, app.appName));
    return std::nullopt;
  }
  vorlu.log(fmt::format("Found download URL: {}", url));
  return url;
}

}  // namespace vorlu
