#include "seal/site_file.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "seal/small_file.h"

namespace vorlu::seal {

Result<SiteFile> readSiteFile(const std::string& path) {
  const Result<std::string> text = readSmallFile(path);
  if (!text) return text.failure();
  nlohmann::json document;
  try {
    document = nlohmann::json::parse(*text);
  } catch (const nlohmann::json::exception& error) {
    return Failure{fmt::format("{}: {}", path, error.what())};
  }
  if (!document.is_object()) return Failure{fmt::format("{}: a site file holds one JSON object", path)};

  SiteFile site;
  for (std::size_t i = 0; i < siteTextCount; ++i) {
    const auto value = document.find(siteKeys[i]);
    if (value == document.end()) return Failure{fmt::format("{}: the key \"{}\" is missing", path, siteKeys[i])};
    if (!value->is_string()) return Failure{fmt::format("{}: the value of \"{}\" must be a text", path, siteKeys[i])};
    site.texts[i] = value->get<std::string>();
  }
  return site;
}

std::string defaultKeyFolder(const std::string& siteFilePath) {
  const std::filesystem::path path(siteFilePath);
  return (path.parent_path() / "keys" / path.stem()).string();
}

}  // namespace vorlu::seal
