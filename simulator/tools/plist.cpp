#include "simulator/tools/plist.h"

#include <fmt/format.h>
#include <plist/plist.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

namespace vorlu::simulator {

namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Node readPlist(const std::string& path) {
  const std::string data = readFile(path);
  plist_t node = nullptr;
  plist_from_memory(data.data(), static_cast<std::uint32_t>(data.size()), &node);
  return {node, &plist_free};
}

// Takes over what the library has allocated.
std::string taken(char* text, std::size_t size) {
  std::string copy(text != nullptr ? text : "", text != nullptr ? size : 0);
  free(text);
  return copy;
}

// Null has no counterpart and throws.
plist_t fromJson(const nlohmann::ordered_json& json) {
  switch (json.type()) {
    case nlohmann::json::value_t::object: {
      Node dict(plist_new_dict(), &plist_free);
      for (const auto& [key, value] : json.items()) plist_dict_set_item(dict.get(), key.c_str(), fromJson(value));
      return dict.release();
    }
    case nlohmann::json::value_t::array: {
      Node array(plist_new_array(), &plist_free);
      for (const auto& value : json) plist_array_append_item(array.get(), fromJson(value));
      return array.release();
    }
    case nlohmann::json::value_t::string:
      return plist_new_string(json.get<std::string>().c_str());
    case nlohmann::json::value_t::boolean:
      return plist_new_bool(json.get<bool>() ? 1 : 0);
    case nlohmann::json::value_t::number_float:
      return plist_new_real(json.get<double>());
    default:
      return plist_new_uint(json.get<std::uint64_t>());
  }
}

Node readJson(const std::string& path) {
  try {
    return {fromJson(nlohmann::ordered_json::parse(readFile(path))), &plist_free};
  } catch (const nlohmann::json::exception&) {
    return {nullptr, &plist_free};
  }
}

// The entry below a node that a key or an index names; null without one.
plist_t child(plist_t node, const std::string& key) {
  if (plist_get_node_type(node) == PLIST_DICT) return plist_dict_get_item(node, key.c_str());
  std::uint32_t index = 0;
  const auto [end, fault] = std::from_chars(key.data(), key.data() + key.size(), index);
  const bool isIndex = fault == std::errc() && end == key.data() + key.size();
  if (plist_get_node_type(node) != PLIST_ARRAY || !isIndex || index >= plist_array_get_size(node)) return nullptr;
  return plist_array_get_item(node, index);
}

std::string shown(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_STRING: {
      char* text = nullptr;
      plist_get_string_val(node, &text);
      return taken(text, text != nullptr ? std::char_traits<char>::length(text) : 0);
    }
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return value != 0 ? "true" : "false";
    }
    case PLIST_UINT: {
      std::uint64_t value = 0;
      plist_get_uint_val(node, &value);
      return std::to_string(static_cast<std::int64_t>(value));
    }
    case PLIST_ARRAY:
      return fmt::format("Array {{ {} entries }}", plist_array_get_size(node));
    case PLIST_DICT:
      return fmt::format("Dict {{ {} entries }}", plist_dict_get_size(node));
    default:
      return "a value that the simulated Mac doesn't print";
  }
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

std::optional<std::string> lintPlist(const std::string& path) {
  if (!std::ifstream(path)) return "file does not exist or is not readable or is not a regular file";
  if (readPlist(path)) return std::nullopt;
  return "it is neither an XML nor a binary property list";
}

std::optional<std::string> convertPlist(const std::string& path, bool binary) {
  Node root = readPlist(path);
  if (!root) root = readJson(path);
  if (!root) return std::nullopt;
  char* data = nullptr;
  std::uint32_t size = 0;
  if (binary)
    plist_to_bin(root.get(), &data, &size);
  else
    plist_to_xml(root.get(), &data, &size);
  return taken(data, size);
}

std::optional<std::string> plistEntry(const std::string& path, const std::vector<std::string>& keys) {
  Node root = readPlist(path);
  if (!root) root.reset(plist_new_dict());
  plist_t node = root.get();
  for (const std::string& key : keys) {
    node = child(node, key);
    if (node == nullptr) return std::nullopt;
  }
  return shown(node);
}

}  // namespace vorlu::simulator
