#include "reference/json_schema.h"

#include <nlohmann/json.hpp>

#include "reference/data_type.h"
#include "reference/key_title.h"

namespace vorlu::reference {
namespace {

using Json = nlohmann::ordered_json;

constexpr auto dialect = "http://json-schema.org/draft-07/schema#";

Json jsonValue(KeyType type, const std::string& text) {
  if (type == KeyType::boolean) return text == "true";
  if (type == KeyType::integer) return std::stoll(text);
  return text;
}

/// Unknown keys are ignored by the agent without a word, so the schema refuses them.
void becomeObject(Json& schema) {
  schema["properties"] = Json::object();
  schema["additionalProperties"] = false;
}

void addLimits(Json& schema, const KeyNote& note) {
  if (!note.choices.empty()) schema["enum"] = Json(std::vector<std::string>(note.choices.begin(), note.choices.end()));
  if (!note.pattern.empty()) schema["pattern"] = note.pattern;
  if (!note.range) return;
  schema["minimum"] = note.range->lowest;
  if (note.range->highest != KeyRange{}.highest) schema["maximum"] = note.range->highest;
}

Json keySchema(const KeyReference& key) {
  Json schema = {
      {"title", keyTitle(key.key())}, {"description", key.note.help}, {"type", dataType(key.type, "object")}};
  if (!key.note.unit.empty())
    schema["description"] = std::string(key.note.help) + " (" + std::string(key.note.unit) + ")";
  if (key.defaultText) schema["default"] = jsonValue(key.type, *key.defaultText);
  addLimits(schema, key.note);
  if (!key.note.example.empty() && key.type == KeyType::text) schema["examples"] = {key.note.example};
  if (key.type == KeyType::textList) schema["items"] = {{"type", "string"}};
  if (key.type == KeyType::section) becomeObject(schema);
  return schema;
}

/// The schema of the section with this path below `root`.
Json& sectionOf(Json& root, std::string_view path) {
  Json* section = &root;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('.'), path.size());
    section = &(*section)["properties"][std::string(path.substr(0, end))];
    path.remove_prefix(std::min(path.size(), end + 1));
  }
  return *section;
}

void addKeys(Json& root, const std::vector<KeyReference>& keys) {
  for (const KeyReference& key : keys) {
    Json& section = sectionOf(root, key.section());
    Json schema = keySchema(key);
    schema["property_order"] = (section["properties"].size() + 1) * 5;  // room between two, as form editors leave it
    section["properties"][std::string(key.key())] = std::move(schema);
    if (!key.note.needs.empty()) section["dependencies"][std::string(key.key())] = {key.note.needs};
  }
}

Json required(std::initializer_list<const char*> keys) {
  return {{"required", Json(keys)}};
}

}  // namespace

std::string preferencesSchema(const std::vector<KeyReference>& keys) {
  Json root = {{"$schema", dialect},
               {"title", "Vorlu"},
               {"description", "Settings of the Vorlu agent"},
               {"__preferencedomain", "com.mosk.vorlu.preferences"},
               {"type", "object"}};
  becomeObject(root);
  addKeys(root, keys);
  return root.dump(2) + "\n";
}

std::string catalogSchema(const std::vector<KeyReference>& keys) {
  Json entry = {{"type", "object"}, {"description", "One application"}};
  becomeObject(entry);
  addKeys(entry, keys);
  entry["required"] = {"appName", "appIdentifier"};
  entry["anyOf"] = {required({"latestVersion"}), required({"latestIntelVersion", "latestSiliconVersion"})};
  const Json root = {{"$schema", dialect},
                     {"title", "Vorlu catalog"},
                     {"description", "The applications that agents detect, install and update"},
                     {"type", "array"},
                     {"items", std::move(entry)}};
  return root.dump(2) + "\n";
}

}  // namespace vorlu::reference
