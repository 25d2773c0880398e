#include "refserver/inventory.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "seal/decoys.h"

namespace vorlu::refserver {

namespace {

using nlohmann::json;

InventoryRecord recordOf(const json& value) {
  InventoryRecord record;
  record.label = value.at("label").get<std::string>();
  record.url = value.at("url").get<std::string>();
  record.token = value.at("token").get<std::string>();
  record.decoys = value.value("decoys", std::size_t{0});
  return record;
}

}  // namespace

std::string pathOfUrl(const std::string& url) {
  const auto scheme = url.find("://");
  const auto path = url.find('/', scheme == std::string::npos ? 0 : scheme + 3);
  if (path == std::string::npos) return "";
  return url.substr(path, url.find_first_of("?#", path) - path);
}

std::string InventoryRecord::path() const {
  return pathOfUrl(url);
}

Result<std::vector<InventoryRecord>> parseInventory(const std::string& text) {
  std::vector<InventoryRecord> records;
  try {
    const auto values = json::parse(text).at("SecInventory").get<std::vector<json>>();
    for (const json& value : values) records.push_back(recordOf(value));
  } catch (const json::exception& error) {
    return Failure{error.what()};
  }
  for (const InventoryRecord& record : records) {
    if (record.decoys > seal::decoyCount) {
      return Failure{
          fmt::format("\"{}\" asks for {} decoys; there are {}", record.label, record.decoys, seal::decoyCount)};
    }
  }
  return records;
}

std::string inventoryDocument(const std::vector<InventoryRecord>& records, const std::vector<std::string>& tokens) {
  json list = json::array();
  for (std::size_t i = 0; i < records.size(); ++i) {
    list.push_back({{"label", records[i].label}, {"url", records[i].url}, {"token", tokens[i]}});
  }
  return json{{"SecInventory", list}}.dump();
}

}  // namespace vorlu::refserver
