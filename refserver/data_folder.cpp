#include "refserver/data_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "seal/small_file.h"

namespace vorlu::refserver {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

Failure broken(const char* name, std::string_view cause) {
  return {fmt::format("{}: {}", name, cause)};
}

bool isBelow(const fs::path& folder, const fs::path& path) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

}  // namespace

Result<std::string> DataFolder::read(const char* name) const {
  auto text = seal::readSmallFile(path_ + "/" + name);
  if (!text) return broken(name, std::generic_category().message(text.failure().code));
  return text;
}

Result<std::vector<InventoryRecord>> DataFolder::inventory() const {
  const auto text = read(inventoryFile);
  if (!text) return text.failure();
  auto records = parseInventory(*text);
  if (!records) return broken(inventoryFile, records.error());
  return records;
}

Result<std::string> DataFolder::array(const char* name) const {
  auto text = read(name);
  if (!text) return text;
  try {
    if (!json::parse(*text).is_array()) return broken(name, "must hold a JSON array");
  } catch (const json::exception& error) {
    return broken(name, error.what());
  }
  return text;
}

Result<std::string> DataFolder::timestamp() const {
  auto text = read(timestampFile);
  if (!text) return text;
  try {
    if (!json::parse(*text).at("timestamp").is_number_integer()) {
      return broken(timestampFile, "\"timestamp\" must be whole seconds");
    }
  } catch (const json::exception& error) {
    return broken(timestampFile, error.what());
  }
  return text;
}

std::optional<std::string> DataFolder::file(const std::string& name) const {
  if (name.empty() || name.find('\0') != std::string::npos) return std::nullopt;
  std::error_code error;
  const fs::path folder = fs::canonical(fs::path(path_) / "files", error);
  if (error) return std::nullopt;
  // Appending an absolute name would leave the folder by itself; the slash before it keeps it inside.
  const fs::path path = fs::canonical(folder.string() + "/" + name, error);
  if (error || !isBelow(folder, path) || !fs::is_regular_file(path, error)) return std::nullopt;
  return path.string();
}

}  // namespace vorlu::refserver
