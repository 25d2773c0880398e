#include "vorlu/detection/web_scraper.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/detection/letter_case.h"
#include "vorlu/platform/regular_expression.h"
#include "vorlu/state/replacement.h"
#include "vorlu/vorlu.h"

namespace vorlu {

bool isWebURL(std::string_view url) {
  const std::size_t colon = url.find("://");
  if (colon == std::string_view::npos) return false;
  const std::string_view scheme = url.substr(0, colon);
  if (!isInAnyCase(scheme, "http") && !isInAnyCase(scheme, "https")) return false;
  const std::string_view rest = url.substr(colon + 3);
  return !rest.empty() && rest.front() != '/' && std::none_of(url.begin(), url.end(), [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == '\x7f' ||
           std::string_view("<>\"\\^`{|}").find(c) != std::string_view::npos;
  });
}

void WebScraper::search(Log& log, const std::string& userAgent) const {
  const auto page = webView.outerHTML(url, userAgent);
  if (!page) return completionHandler(std::nullopt);
  const auto pattern = RegularExpression::compile(regexPattern);
  if (!pattern) log(fmt::format("Error: Regular expression errored -  {}", pattern.error()));
  completionHandler(pattern ? pattern->firstMatch(*page) : std::nullopt);
}

std::optional<std::string> scrapeDownloadURL(Vorlu& vorlu, const std::string& pageURL,
                                             const std::string& regexPattern) {
  const CurrentApp& app = vorlu.currentApp;
  if (!isWebURL(pageURL)) {
    vorlu.log("Error: Invalid search URL sepcified, could not obtain download URL.");
    return std::nullopt;
  }
  std::string found;
  const auto take = [&](const std::optional<std::string>& match) {
    if (!match) return vorlu.log(fmt::format("Error: A download URL for {} could not be found.", app.appName));
    found = replacedAll(*match, "&amp;", "&");
    vorlu.log(fmt::format("Obtained {} download URL: {}", app.appName, found), silent);
  };
  const bool namesUserAgent = isInAnyCase(app.requestHeaderKey, "user-agent");
  WebScraper{vorlu.platform.webView, pageURL, regexPattern, take}.search(vorlu.log,
                                                                         namesUserAgent ? app.requestHeaderValue : "");
  return found.empty() ? std::nullopt : std::optional(found);
}

}  // namespace vorlu
