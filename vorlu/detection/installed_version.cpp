#include "vorlu/detection/installed_version.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

const std::string unknown = "Unknown";

struct BundleVersion {
  std::optional<std::string> CFBundleShortVersionString;
  std::optional<std::string> CFBundleVersion;
  static constexpr auto fields() {
    return std::array{field<&BundleVersion::CFBundleShortVersionString>("CFBundleShortVersionString"),
                      field<&BundleVersion::CFBundleVersion>("CFBundleVersion")};
  }
};

struct BundleIdentifier {
  std::optional<std::string> CFBundleIdentifier;
  static constexpr auto fields() {
    return std::array{field<&BundleIdentifier::CFBundleIdentifier>("CFBundleIdentifier")};
  }
};

struct PackageReceipt {
  std::optional<std::string> PackageVersion;
  static constexpr auto fields() { return std::array{field<&PackageReceipt::PackageVersion>("PackageVersion")}; }
};

std::string infoPlistOf(const std::string& bundlePath) {
  return bundlePath + "/Contents/Info.plist";
}

/// A text of a property list; "Unknown" when the file or the key can't be had. "Unknown" may stand for the path, too.
template <class T>
std::string readKey(FileManager& files, const std::string& path, std::optional<std::string> T::*key) {
  if (!path.starts_with('/')) return unknown;
  const Result<std::string> bytes = files.read(path);
  if (!bytes) return unknown;
  const Result<T> record = decodePropertyList<T>(*bytes);
  return record ? ((*record).*key).value_or(unknown) : unknown;
}

}  // namespace

std::string readInstalledVersion(Vorlu& vorlu, const VersionSource& source) {
  FileManager& files = vorlu.platform.files;
  const auto plist = [&source] { return source.infoPlistPath.empty() ? infoPlistOf(source.path) : source.path; };
  if (source.method == "CFBundleShortVersionString") {
    return readKey(files, plist(), &BundleVersion::CFBundleShortVersionString);
  }
  if (source.method == "CFBundleVersion") return readKey(files, plist(), &BundleVersion::CFBundleVersion);
  if (source.method == "shellCommand") return scriptOutput(vorlu, source.script).value_or(unknown);
  if (source.method == "pkgReceipt") return readKey(files, source.receiptPath, &PackageReceipt::PackageVersion);
  return {};
}

std::string findPackageReceipt(Vorlu& vorlu, const std::string& fileName) {
  DirectoryListings listings(vorlu.platform.files);
  return findPackageReceipt(vorlu, fileName, listings);
}

std::string findPackageReceipt(Vorlu& vorlu, const std::string& fileName, DirectoryListings& listings) {
  const auto& items = listings.of(paths::packageReceipts);
  if (!items) {
    vorlu.log(fmt::format("Failed to list receipt directory items: {}", items.error()));
    return unknown;
  }
  if (std::find(items->begin(), items->end(), fileName) == items->end()) return unknown;
  return fmt::format("{}/{}", paths::packageReceipts, fileName);
}

std::string readBundleIdentifier(Vorlu& vorlu, const std::string& bundlePath) {
  return readKey(vorlu.platform.files, infoPlistOf(bundlePath), &BundleIdentifier::CFBundleIdentifier);
}

}  // namespace vorlu
