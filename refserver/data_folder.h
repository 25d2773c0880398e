#pragma once

#include <optional>
#include <string>
#include <vector>

#include "refserver/inventory.h"
#include "vorlu/platform/result.h"

namespace vorlu::refserver {

/// The folder that an administrator keeps. Every question reads its file anew. Failures name the file, not its folder.
class DataFolder {
 public:
  static constexpr const char* inventoryFile = "inventory.json";
  static constexpr const char* catalogFile = "catalog.json";
  static constexpr const char* testingFile = "testing.json";
  static constexpr const char* manifestFile = "manifest.json";
  static constexpr const char* timestampFile = "timestamp.json";

  /// Where the reports of a data folder are kept.
  static std::string reports(const std::string& dataFolder) { return dataFolder + "/reports"; }

  explicit DataFolder(std::string path) : path_(std::move(path)) {}

  Result<std::vector<InventoryRecord>> inventory() const;
  /// The text of a file that holds a JSON array, as it stands.
  Result<std::string> array(const char* name) const;
  /// The text of timestamp.json; `{"timestamp": N}` with a whole N.
  Result<std::string> timestamp() const;
  /// Path of the regular file `name` ("icons/a.png") below `files/`; nothing when there is none, or when it lies
  /// elsewhere.
  std::optional<std::string> file(const std::string& name) const;

 private:
  Result<std::string> read(const char* name) const;
  std::string path_;
};

}  // namespace vorlu::refserver
