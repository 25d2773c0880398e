#pragma once

#include <string>
#include <string_view>

namespace vorlu::reference {

/// A key in words, as the heading of a field: "acceptableAppBundleIDs" is "Acceptable App Bundle IDs".
std::string keyTitle(std::string_view key);

}  // namespace vorlu::reference
