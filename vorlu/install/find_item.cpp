#include "vorlu/install/find_item.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "vorlu/install/source_marker.h"
#include "vorlu/platform/regular_expression.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// The first path below `root` that `wanted` takes.
std::string search(Vorlu& vorlu, const std::string& root, const std::function<bool(const std::string&)>& wanted) {
  const auto items = vorlu.platform.files.enumerate(root);
  if (!items) {
    vorlu.log(fmt::format("Error: Could not search {} - {}", root, items.error()));
    return {};
  }
  const auto found = std::find_if(items->begin(), items->end(), [&](const TreeItem& item) {
    return (item.kind == FileKind::regular || item.kind == FileKind::directory) && wanted(item.relativePath);
  });
  return found == items->end() ? std::string() : found->relativePath;
}

}  // namespace

std::string findItem(Vorlu& vorlu, const std::string& root, const std::string& item) {
  if (!hasMarker(item, regexMarker)) return search(vorlu, root, [&](const std::string& path) { return path == item; });

  const auto pattern = RegularExpression::compile(withoutMarker(item, regexMarker));
  if (!pattern) {
    vorlu.log(fmt::format("Error: Regular expression errored -  {}", pattern.error()));
    return {};
  }
  std::string found =
      search(vorlu, root, [&](const std::string& path) { return pattern->firstMatch(path).has_value(); });
  if (!found.empty()) vorlu.log(fmt::format("Found match for item: {}", found), silent);
  return found;
}

}  // namespace vorlu
