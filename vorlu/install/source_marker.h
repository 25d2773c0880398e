#pragma once

#include <string>
#include <string_view>

namespace vorlu {

/// Marks inside an item of the catalog: the rest is a pattern; the found name is the destination name.
inline constexpr std::string_view regexMarker = "REGEX:";
inline constexpr std::string_view installerAppMarker = "INSTALLERAPP:";

inline bool hasMarker(std::string_view item, std::string_view marker) {
  return item.find(marker) != std::string_view::npos;
}

/// `item` with every occurrence of `marker` removed.
inline std::string withoutMarker(std::string_view item, std::string_view marker) {
  std::string rest(item);
  for (std::size_t at = rest.find(marker); at != std::string::npos; at = rest.find(marker, at))
    rest.erase(at, marker.size());
  return rest;
}

}  // namespace vorlu
