#pragma once

#include <string>

#include "vorlu/detection/directory_listings.h"

namespace vorlu {

struct Vorlu;

/// How an installed version is read.
struct VersionSource {
  std::string method;         ///< `latestVersionMethod`; an unknown one reads nothing and gives an empty text
  std::string path;           ///< the located item
  std::string infoPlistPath;  ///< not empty: `path` itself is the property list
  std::string script;         ///< for "shellCommand"
  std::string receiptPath;    ///< for "pkgReceipt"
};

/// The installed version, "Unknown" when it can't be read. The one reader, for detection and for the check after an
/// install.
std::string readInstalledVersion(Vorlu& vorlu, const VersionSource& source);

/// Full path of a package receipt under /var/db/receipts, or "Unknown".
std::string findPackageReceipt(Vorlu& vorlu, const std::string& fileName);
std::string findPackageReceipt(Vorlu& vorlu, const std::string& fileName, DirectoryListings& listings);

/// CFBundleIdentifier of a bundle, "Unknown" when it can't be read.
std::string readBundleIdentifier(Vorlu& vorlu, const std::string& bundlePath);

}  // namespace vorlu
