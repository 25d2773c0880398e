#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace vorlu {

/// A browser without a window. Stands for WKWebView.
class WebView {
 public:
  virtual ~WebView() = default;

  static constexpr std::chrono::seconds longestLoad{60};

  /// Loads a page, runs its scripts and gives document.documentElement.outerHTML. An empty `userAgent` means the
  /// view's own. Nothing when the page can't be loaded or hasn't finished after `longestLoad`.
  virtual std::optional<std::string> outerHTML(const std::string& url, const std::string& userAgent) = 0;
};

}  // namespace vorlu
