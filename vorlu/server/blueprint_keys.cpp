#include "vorlu/server/blueprint_keys.h"

#include <string_view>

namespace vorlu {
namespace {

constexpr std::string_view sha256 = "^([0-9a-f]{64})?$";
constexpr std::string_view webAddress = "^(https?://.+)?$";

/// Nothing for an empty text: it is what every absent text counts as.
std::optional<std::string> shownDefault(std::string_view ifAbsent) {
  return ifAbsent.empty() ? std::nullopt : std::optional<std::string>(ifAbsent);
}
std::optional<std::string> shownDefault(bool ifAbsent) {
  return ifAbsent ? "true" : "false";
}
std::optional<std::string> shownDefault(std::int64_t ifAbsent) {
  return std::to_string(ifAbsent);
}

}  // namespace

std::vector<KeyReference> blueprintKeys() {
  return {
#define BLUEPRINT_TEXT(name, ifAbsent, ...) \
  {#name, KeyType::text, shownDefault(std::string_view(ifAbsent)), KeyNote{__VA_ARGS__}},
#define BLUEPRINT_BOOL(name, ifAbsent, ...) {#name, KeyType::boolean, shownDefault(ifAbsent), KeyNote{__VA_ARGS__}},
#define BLUEPRINT_INT(name, ifAbsent, ...) \
  {#name, KeyType::integer, shownDefault(std::int64_t{ifAbsent}), KeyNote{__VA_ARGS__}},
#define BLUEPRINT_LIST(name, ...) {#name, KeyType::textList, std::nullopt, KeyNote{__VA_ARGS__}},
#include "vorlu/server/blueprint_fields.def"
  };
}

}  // namespace vorlu
