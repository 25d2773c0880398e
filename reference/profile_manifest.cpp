#include "reference/profile_manifest.h"

#include <array>

#include "reference/data_type.h"
#include "reference/key_title.h"
#include "vorlu/state/property_list.h"

namespace vorlu::reference {
namespace {

void add(Encoder& out, std::string_view key, std::string_view value) {
  out.key(key);
  out.string(value);
}
void add(Encoder& out, std::string_view key, std::int64_t value) {
  out.key(key);
  out.integer(value);
}

void addDefault(Encoder& out, const KeyReference& key) {
  if (!key.defaultText) return;
  out.key("pfm_default");
  if (key.type == KeyType::boolean) return out.boolean(*key.defaultText == "true");
  if (key.type == KeyType::integer) return out.integer(std::stoll(*key.defaultText));
  out.string(*key.defaultText);
}

void addLimits(Encoder& out, const KeyNote& note) {
  if (!note.pattern.empty()) add(out, "pfm_format", note.pattern);
  if (note.range) {
    add(out, "pfm_range_min", note.range->lowest);
    if (note.range->highest != KeyRange{}.highest) add(out, "pfm_range_max", note.range->highest);
  }
  if (note.choices.empty()) return;
  out.key("pfm_range_list");
  out.beginArray();
  for (const std::string_view choice : note.choices) out.string(choice);
  out.endArray();
}

/// Writes the keys of one section, beginning at `next`, and leaves `next` behind them.
class Subkeys {
 public:
  Subkeys(Encoder& out, const std::vector<KeyReference>& keys) : out_(out), keys_(keys) {}

  void write(std::string_view section) {
    while (next_ < keys_.size() && keys_[next_].section() == section) writeKey(keys_[next_++]);
  }

 private:
  void writeKey(const KeyReference& key) {
    const KeyNote& note = key.note;
    out_.beginDictionary();
    add(out_, "pfm_name", key.key());
    add(out_, "pfm_title", keyTitle(key.key()));
    add(out_, "pfm_description", note.help);
    add(out_, "pfm_type", dataType(key.type, "dictionary"));
    addDefault(out_, key);
    addLimits(out_, note);
    if (!note.unit.empty()) add(out_, "pfm_value_unit", note.unit);
    if (!note.example.empty()) add(out_, "pfm_value_placeholder", note.example);
    if (key.type == KeyType::textList || key.type == KeyType::section) {
      out_.key("pfm_subkeys");
      out_.beginArray();
      key.type == KeyType::section ? write(key.path) : writeElement(key);
      out_.endArray();
    }
    out_.endDictionary();
  }

  void writeElement(const KeyReference& key) {
    out_.beginDictionary();
    add(out_, "pfm_name", std::string(key.key()) + "Item");
    add(out_, "pfm_title", "Item");
    add(out_, "pfm_type", "string");
    out_.endDictionary();
  }

  Encoder& out_;
  const std::vector<KeyReference>& keys_;
  std::size_t next_ = 0;
};

/// What every payload of a profile has beside its settings.
struct PayloadKey {
  std::string_view name;
  std::string_view description;
  std::string_view value;  ///< empty: the editor makes one
};

constexpr std::array payloadKeys = {
    PayloadKey{"PayloadDescription", "What the payload is for.", "Settings of the Vorlu agent"},
    PayloadKey{"PayloadDisplayName", "Name of the payload.", "Vorlu"},
    PayloadKey{"PayloadIdentifier", "Identifier of the payload.", "com.mosk.vorlu.preferences"},
    PayloadKey{"PayloadType", "Type of the payload.", "com.mosk.vorlu.preferences"},
    PayloadKey{"PayloadUUID", "Unique identifier of the payload.", ""},
    PayloadKey{"PayloadOrganization", "Who deploys the profile.", ""},
};

void writePayloadKeys(Encoder& out) {
  for (const PayloadKey& key : payloadKeys) {
    out.beginDictionary();
    add(out, "pfm_name", key.name);
    add(out, "pfm_title", keyTitle(key.name));
    add(out, "pfm_description", key.description);
    add(out, "pfm_type", "string");
    if (!key.value.empty()) add(out, "pfm_default", key.value);
    if (key.name != "PayloadOrganization") add(out, "pfm_require", "always");
    out.endDictionary();
  }
  out.beginDictionary();
  add(out, "pfm_name", "PayloadVersion");
  add(out, "pfm_title", "Payload Version");
  add(out, "pfm_description", "Version of the payload's form.");
  add(out, "pfm_type", "integer");
  add(out, "pfm_default", std::int64_t{1});
  add(out, "pfm_require", "always");
  out.endDictionary();
}

void addList(Encoder& out, std::string_view key, std::string_view onlyItem) {
  out.key(key);
  out.beginArray();
  out.string(onlyItem);
  out.endArray();
}

void writeManifest(Encoder& out, const std::vector<KeyReference>& keys) {
  out.beginDictionary();
  add(out, "pfm_title", "Vorlu");
  add(out, "pfm_description", "Settings of the Vorlu agent");
  add(out, "pfm_domain", "com.mosk.vorlu.preferences");
  add(out, "pfm_format_version", std::int64_t{1});
  add(out, "pfm_version", std::int64_t{1});
  addList(out, "pfm_platforms", "macOS");
  addList(out, "pfm_targets", "system");
  out.key("pfm_unique");
  out.boolean(true);
  out.key("pfm_subkeys");
  out.beginArray();
  writePayloadKeys(out);
  Subkeys(out, keys).write("");
  out.endArray();
  out.endDictionary();
}

}  // namespace

std::string profileManifest(const std::vector<KeyReference>& keys) {
  return writePropertyList([&](Encoder& out) { writeManifest(out, keys); });
}

}  // namespace vorlu::reference
