#include "vorlu/install/archive.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/install/line_reader.h"
#include "vorlu/install/remove_downloads.h"
#include "vorlu/install/ticker.h"
#include "vorlu/install/tree_walk.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

std::string_view folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

/// Whether a link's target goes up behind a name: that name may be a link, so nobody can tell where it leads.
bool goesUpBehindName(std::string_view target) {
  const std::size_t name = target.find_first_not_of("./");
  return name != std::string_view::npos && fmt::format("{}/", target.substr(name)).find("/../") != std::string::npos;
}

/// tar ends with 1 when it could not give a file to the archive's user, which hurts nothing.
bool isHarmless(std::string_view message) {
  constexpr std::array harmless = {": Can't set user=", "Error exit delayed from previous errors",
                                   "Failed to set default locale"};
  return message.empty() || std::any_of(harmless.begin(), harmless.end(), [message](std::string_view text) {
           return message.find(text) != std::string_view::npos;
         });
}

/// Whether tar has put a member elsewhere than where its name says; it does so without failing.
bool isMoved(std::string_view message) {
  return message.find("Removing leading ") != std::string_view::npos;
}

/// Why the unpacked tree can't be used; nothing when it is whole. tar itself writes nothing outside the folder.
std::optional<std::string> unpack(Vorlu& vorlu, const std::string& path) {
  Command command;
  command.program = "/usr/bin/tar";
  command.arguments = {"-xf", path, "-C", paths::output};
  const ProcessResult result = runTool(vorlu.platform.processes, vorlu.log, command);
  std::optional<std::string> fault;
  LineReader messages([&](std::string_view line) {
    if (!fault && (isMoved(line) || (result.status != 0 && !isHarmless(line)))) fault = std::string(line);
  });
  messages.feed(result.output);
  messages.finish();
  if (!fault && result.status != 0 && (result.status != 1 || result.output.empty()))
    fault = "it could not be unpacked to its end";
  return fault;
}

/// Why something in the Output directory may not stay there; nothing when all may.
std::optional<std::string> refusalOfTree(FileManager& files) {
  const Status allowed =
      walkTree(files, paths::output, [&files](const std::string& path, const FileInfo& info) -> Status {
        std::string target;
        if (info.kind == FileKind::link) {
          auto read = files.linkTarget(path);
          if (!read) return read.failure();
          target = std::move(*read);
        }
        const auto refusal = refusalOfItem(std::string_view(path).substr(paths::output.size() + 1), info, target);
        return refusal ? Status(Failure{*refusal}) : success();
      });
  return allowed ? std::nullopt : std::optional(allowed.error());
}

bool extract(Vorlu& vorlu, const std::string& path) {
  std::optional<std::string> fault = unpack(vorlu, path);
  if (!fault) fault = refusalOfTree(vorlu.platform.files);
  if (!fault) {
    vorlu.log("Extraction complete");
    return true;
  }
  vorlu.log(fmt::format("Error: Could not extract {} - {}", path, trimmed(*fault)));
  emptyOutput(vorlu);
  return false;
}

bool extractBesideTicker(Vorlu& vorlu, const std::string& path, bool showProgress) {
  if (!showProgress) return extract(vorlu, path);
  const auto archive = vorlu.platform.files.info(path);
  bool extracted = false;
  runWithTicker(vorlu, extractTicker, archive ? archive->size : 0, [&] { extracted = extract(vorlu, path); });
  return extracted;
}

}  // namespace

bool leavesFolder(std::string_view relativePath) {
  if (relativePath.starts_with('/')) return true;
  int depth = 0;
  while (!relativePath.empty()) {
    const std::string_view part = relativePath.substr(0, relativePath.find('/'));
    relativePath.remove_prefix(std::min(relativePath.size(), part.size() + 1));
    if (part == "..") --depth;
    if (!part.empty() && part != "." && part != "..") ++depth;
    if (depth < 0) return true;
  }
  return false;
}

std::optional<std::string> placeInside(FileManager& files, const std::string& folder, std::string_view item) {
  constexpr int mostLinks = 32;
  if (item.starts_with('/')) return std::nullopt;
  std::string place;  // with a slash before each part
  std::string rest(item);
  for (int links = 0; !rest.empty();) {
    const std::string part = rest.substr(0, rest.find('/'));
    rest.erase(0, part.size() + 1);
    if (part.empty() || part == ".") continue;
    if (part == ".." && place.empty()) return std::nullopt;
    const std::size_t parent = place.empty() ? 0 : place.rfind('/');
    if (part == "..") {
      place.erase(parent);
      continue;
    }
    const std::string next = fmt::format("{}/{}", place, part);
    const auto info = files.info(folder + next);
    if (!info) return std::nullopt;
    if (info->kind != FileKind::link) {
      place = next;
      continue;
    }
    const auto target = files.linkTarget(folder + next);
    if (!target || target->starts_with('/') || ++links > mostLinks) return std::nullopt;
    rest = fmt::format("{}/{}", *target, rest);
  }
  return place.empty() ? std::nullopt : std::optional(place.substr(1));
}

std::optional<std::string> refusalOfItem(std::string_view path, const FileInfo& info, std::string_view linkTarget) {
  constexpr mode_t setUser = 04000;
  constexpr mode_t setGroup = 02000;
  switch (info.kind) {
    case FileKind::other:
      return fmt::format("{} is no file", path);
    case FileKind::regular:
      if ((info.mode & (setUser | setGroup)) != 0) return fmt::format("{} would run as another user", path);
      break;
    case FileKind::directory:
      if ((info.mode & setUser) != 0) return fmt::format("{} would run as another user", path);
      break;
    case FileKind::link:
      if (linkTarget.starts_with('/') || goesUpBehindName(linkTarget) ||
          leavesFolder(fmt::format("{}{}", folderOf(path), linkTarget)))
        return fmt::format("{} points outside", path);
      break;
  }
  return std::nullopt;
}

bool extractArchive(Vorlu& vorlu, const std::string& path, bool showProgress) {
  vorlu.platform.files.createDirectory(paths::output, {0755, "root", "wheel"});
  emptyOutput(vorlu);
  return extractBesideTicker(vorlu, path, showProgress);
}

bool extractNestedArchive(Vorlu& vorlu, const std::string& item, bool showProgress) {
  const std::string path = fmt::format("{}/{}", paths::output, item);
  if (!leavesFolder(item)) return extractBesideTicker(vorlu, path, showProgress);
  vorlu.log(fmt::format("Error: Could not extract {} - it lies outside of the archive", path));
  emptyOutput(vorlu);
  return false;
}

}  // namespace vorlu
