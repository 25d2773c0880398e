#pragma once

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/linux/root_folder.h"
#include "vorlu/platform/processes.h"
#include "vorlu/platform/web_view.h"

namespace vorlu {

/// Headless Chromium, with a profile of its own for each page. Where Chromium isn't installed every page is nothing.
class LinuxWebView : public WebView {
 public:
  LinuxWebView(RootFolder root, FileManager& files, Processes& processes)
      : root_(std::move(root)), files_(files), processes_(processes) {}

  std::optional<std::string> outerHTML(const std::string& url, const std::string& userAgent) override;

 private:
  RootFolder root_;
  FileManager& files_;
  Processes& processes_;
};

}  // namespace vorlu
