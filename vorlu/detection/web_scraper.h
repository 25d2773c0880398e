#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/web_view.h"

namespace vorlu {

struct Vorlu;
class Log;

/// An address that a browser takes for one of the web and not for a file, a search or an option.
bool isWebURL(std::string_view url);

/// Searches one web page, as its scripts have made it, for a pattern.
struct WebScraper {
  WebView& webView;
  std::string url;
  std::string regexPattern;
  /// Receives the whole first match, or nothing.
  std::function<void(std::optional<std::string>)> completionHandler;

  /// Loads the page and calls the handler once. A pattern that doesn't compile is logged.
  void search(Log& log, const std::string& userAgent) const;
};

/// The selected app's download URL, as a web page holds it; nothing, logged, when it isn't found there. A request
/// header of the catalog that names a user agent names the view's.
std::optional<std::string> scrapeDownloadURL(Vorlu& vorlu, const std::string& pageURL, const std::string& regexPattern);

}  // namespace vorlu
