#pragma once

#include <string>
#include <vector>

#include "vorlu/platform/result.h"

namespace vorlu::refserver {

/// One service that the inventory tells the agents of.
struct InventoryRecord {
  std::string label;
  std::string url;
  std::string token;
  std::size_t decoys = 0;  ///< how many decoys go into the token when it is sent, 0 to 10

  /// Path of `url`, which is what a request for it carries.
  std::string path() const;
};

/// Labels that the server answers for.
inline constexpr const char* liveLabel = "live_blueprints";
inline constexpr const char* testingLabel = "testing_blueprints";
inline constexpr const char* manifestLabel = "SelfUpdatesNew";
inline constexpr const char* reportsLabel = "reports";

/// The records of an inventory document, `{"SecInventory": [{"label", "url", "token", "decoys"}, …]}`; "decoys" may be
/// absent. A failure says what is wrong, without the file's name.
Result<std::vector<InventoryRecord>> parseInventory(const std::string& text);

/// The document as agents read it, with `tokens[i]` in place of the i-th record's token.
std::string inventoryDocument(const std::vector<InventoryRecord>& records, const std::vector<std::string>& tokens);

/// Path of a URL; empty when it ends with its host.
std::string pathOfUrl(const std::string& url);

}  // namespace vorlu::refserver
