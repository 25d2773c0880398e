#include "vorlu/install/manifest_package.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <vector>

#include "vorlu/install/download.h"
#include "vorlu/install/verification.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/work_directories.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int attempts = 3;

bool isVersion(const std::string& text) {
  const auto fits = [](unsigned char c) { return std::isalnum(c) || c == '.' || c == '-' || c == '+'; };
  return !text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) &&
         std::all_of(text.begin(), text.end(), fits);
}

/// The last record of the name. Records of nobody we know are told of, once each.
std::optional<SelfUpdateStruct> findRecord(Vorlu& vorlu, const std::string& componentName) {
  std::optional<SelfUpdateStruct> found;
  for (SelfUpdateStruct& record : fetchComponentManifest(vorlu)) {
    const std::string& name = orEmpty(record.componentName);
    if (name == componentName)
      found = std::move(record);
    else if (name != "Vorlu" && name != "Dialog")
      vorlu.log(fmt::format("Ignoring the component {} of the manifest", name), silent);
  }
  return found;
}

}  // namespace

std::optional<SelfUpdateStruct> manifestRecord(Vorlu& vorlu, const std::string& componentName) {
  std::optional<SelfUpdateStruct> record;
  if (!fetchInventoryValue(vorlu, selfUpdates, false).empty()) record = findRecord(vorlu, componentName);
  if (record && isVersion(orEmpty(record->latestVersion))) return record;
  vorlu.log(
      "Warning: Could not obtain Vorlu version information. Unable to check for Vorlu updates. Will retry later...");
  return std::nullopt;
}

std::optional<std::string> downloadPackage(Vorlu& vorlu, const SelfUpdateStruct& record, const std::string& fileName,
                                           const std::string& retryText) {
  ensureWorkDirectories(vorlu);
  Transfer transfer;
  transfer.url = orEmpty(record.downloadURL);
  transfer.destination = fmt::format("{}/{}", paths::downloads, fileName);
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    if (attempt > 1) vorlu.log(fmt::format("{} (attempt {} of {})...", retryText, attempt, attempts));
    if (fetchInto(vorlu, transfer) == FetchEnd::done) return transfer.destination;
  }
  return std::nullopt;
}

bool isPackageSigned(Vorlu& vorlu, const std::string& path, const SelfUpdateStruct& record) {
  const std::string& expected = orEmpty(record.codeSigning);
  return readPackageSignature(vorlu, path) == expected && !expected.empty();
}

}  // namespace vorlu
