#pragma once

#include <array>
#include <string>
#include <string_view>

#include "vorlu/platform/result.h"
#include "vorlu/state/site.h"

namespace vorlu::seal {

/// Key of each text in a site file, by SiteText.
inline constexpr std::array<std::string_view, siteTextCount> siteKeys = {"connectivityURL",
                                                                         "timestampURL",
                                                                         "serverDataURL",
                                                                         "serverDataPath",
                                                                         "signatureQueryPrefix",
                                                                         "expiryQueryPrefix",
                                                                         "requestMethod",
                                                                         "authorizationPrefix",
                                                                         "reportMethod",
                                                                         "reportToken",
                                                                         "reportHeaderName",
                                                                         "reportHeaderValue",
                                                                         "customerName",
                                                                         "supportContact",
                                                                         "makerLine",
                                                                         "oldName",
                                                                         "oldDir",
                                                                         "toolName"};

/// The values of one site, in the clear.
struct SiteFile {
  std::array<std::string, siteTextCount> texts;  ///< by SiteText
  const std::string& operator[](SiteText text) const { return texts[static_cast<std::size_t>(text)]; }
  std::string& operator[](SiteText text) { return texts[static_cast<std::size_t>(text)]; }
};

/// Reads a site file. A failure names the file, and the key that is missing or no text.
Result<SiteFile> readSiteFile(const std::string& path);

/// Folder of a site's keys beside its file: "site/local.json" has "site/keys/local".
std::string defaultKeyFolder(const std::string& siteFilePath);

}  // namespace vorlu::seal
