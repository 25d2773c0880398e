#include "simulator/tools/plist.h"

#include <fmt/format.h>
#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

namespace vorlu::simulator {

namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

Node readPlist(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string data{std::istreambuf_iterator<char>(file), {}};
  plist_t node = nullptr;
  plist_from_memory(data.data(), static_cast<std::uint32_t>(data.size()), &node);
  return {node, &plist_free};
}

}  // namespace

std::optional<std::map<std::string, std::string>> readTexts(const std::string& path) {
  const Node root = readPlist(path);
  if (!root || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
  plist_dict_iter cursor = nullptr;
  plist_dict_new_iter(root.get(), &cursor);
  std::map<std::string, std::string> texts;
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(root.get(), cursor, &key, &value);
    if (key == nullptr) break;
    if (value != nullptr && plist_get_node_type(value) == PLIST_STRING) {
      char* text = nullptr;
      plist_get_string_val(value, &text);
      if (text != nullptr) texts[key] = text;
      free(text);
    }
    free(key);
  }
  free(cursor);
  return texts;
}

bool makeBinary(const std::string& path) {
  const Node root = readPlist(path);
  char* data = nullptr;
  std::uint32_t size = 0;
  if (root) plist_to_bin(root.get(), &data, &size);
  if (data == nullptr) {
    fmt::print(stderr, "sim-tools: {} is no property list\n", path);
    return false;
  }
  std::ofstream file(path, std::ios::binary);
  file.write(data, size);
  file.close();
  free(data);
  if (!file) fmt::print(stderr, "sim-tools: {} could not be written\n", path);
  return file.good();
}

}  // namespace vorlu::simulator
