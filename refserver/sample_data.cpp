#include "refserver/sample_data.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>

#include "refserver/data_folder.h"
#include "seal/random.h"
#include "seal/small_file.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

namespace {

constexpr std::size_t tokenBytes = 24;

std::string sampleInventory(const std::string& baseUrl) {
  auto records = nlohmann::ordered_json::array();
  const std::pair<const char*, const char*> services[] = {{liveLabel, "/catalog/live"},
                                                          {testingLabel, "/catalog/testing"},
                                                          {manifestLabel, "/manifest"},
                                                          {reportsLabel, "/reports"}};
  for (const auto& [label, path] : services) {
    records.push_back({{"label", label}, {"url", baseUrl + path}, {"token", hexEncode(seal::randomBytes(tokenBytes))}});
  }
  return nlohmann::ordered_json{{"SecInventory", records}}.dump(2) + "\n";
}

}  // namespace

Status makeSampleData(const std::string& folder, const std::string& baseUrl) {
  std::error_code error;
  std::filesystem::create_directories(folder + "/files", error);
  if (error) return Failure{fmt::format("can't create {}/files: {}", folder, error.message())};

  struct Sample {
    const char* name;
    std::string content;
    mode_t mode;
  };
  const Sample samples[] = {{DataFolder::inventoryFile, sampleInventory(baseUrl), 0600},
                            {DataFolder::catalogFile, "[]\n", 0644},
                            {DataFolder::testingFile, "[]\n", 0644},
                            {DataFolder::manifestFile, "[]\n", 0644},
                            {DataFolder::timestampFile, "{\"timestamp\": 1}\n", 0644}};
  for (const Sample& sample : samples) {
    Status status = seal::makeOnce(folder + "/" + sample.name, sample.content, sample.mode);
    if (!status) return status;
  }
  return success();
}

Status renewTimestamp(const std::string& folder, double now) {
  return seal::replaceFile(folder + "/" + DataFolder::timestampFile,
                           fmt::format("{{\"timestamp\": {}}}\n", static_cast<std::int64_t>(now)), 0644);
}

}  // namespace vorlu::refserver
