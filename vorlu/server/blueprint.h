#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu {

/// One application of the catalog, as the server describes it. Every field may be absent.
struct AppBlueprints {  // NOLINT(clang-analyzer-optin.performance.Padding): the order is the written one
#define BLUEPRINT_TEXT(name, ifAbsent, ...) std::optional<std::string> name;
#define BLUEPRINT_BOOL(name, ifAbsent, ...) std::optional<bool> name;
#define BLUEPRINT_INT(name, ifAbsent, ...) std::optional<std::int64_t> name;
#define BLUEPRINT_LIST(name, ...) std::optional<std::vector<std::string>> name;  // NOLINT(bugprone-macro-parentheses)
#include "vorlu/server/blueprint_fields.def"

  static constexpr auto fields() {
#define BLUEPRINT_TEXT(name, ifAbsent, ...) field<&AppBlueprints::name>(#name),
#define BLUEPRINT_BOOL(name, ifAbsent, ...) field<&AppBlueprints::name>(#name),
#define BLUEPRINT_INT(name, ifAbsent, ...) field<&AppBlueprints::name>(#name),
#define BLUEPRINT_LIST(name, ...) field<&AppBlueprints::name>(#name),
    return std::array<FieldOf<AppBlueprints>, 70>{{
#include "vorlu/server/blueprint_fields.def"
    }};
  }
};

/// A field's text, empty when absent.
inline const std::string& orEmpty(const std::optional<std::string>& text) {
  static const std::string empty;
  return text ? *text : empty;
}

}  // namespace vorlu
