#include "vorlu/install/archive.h"

#include <fmt/format.h>

#include <vector>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/install/line_reader.h"
#include "vorlu/install/remove_downloads.h"
#include "vorlu/install/tool.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

Command tar(std::vector<std::string> arguments) {
  Command command;
  command.program = "/usr/bin/tar";
  command.arguments = std::move(arguments);
  return command;
}

/// The name column of a listing line: what stands behind mode, links, owner, group, size and the three of the date.
std::string_view nameColumn(std::string_view line) {
  for (int column = 0; column < 8; ++column) {
    line.remove_prefix(std::min(line.find(' '), line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  }
  return line;
}

std::string_view folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

/// Whether a link's target goes up behind a name: that name may be a link, so nobody can tell where it leads.
bool goesUpBehindName(std::string_view target) {
  const std::size_t name = target.find_first_not_of("./");
  return name != std::string_view::npos && fmt::format("{}/", target.substr(name)).find("/../") != std::string::npos;
}

/// Whether a link of the listing may point outside. A name can hold the arrow too, so each place of it counts.
bool linkLeavesFolder(std::string_view column) {
  constexpr std::string_view arrow = " -> ";
  for (std::size_t at = column.find(arrow); at != std::string_view::npos; at = column.find(arrow, at + 1)) {
    const std::string_view target = column.substr(at + arrow.size());
    const bool absolute = target.starts_with('/');
    if (absolute || goesUpBehindName(target)) return true;
    if (leavesFolder(fmt::format("{}{}", folderOf(column.substr(0, at)), target))) return true;
  }
  return false;
}

/// The same of a hard link, whose target counts from the folder itself.
bool hardLinkLeavesFolder(std::string_view column) {
  constexpr std::string_view word = " link to ";
  for (std::size_t at = column.find(word); at != std::string_view::npos; at = column.find(word, at + 1))
    if (leavesFolder(column.substr(at + word.size()))) return true;
  return false;
}

/// Why the archive may not be unpacked; nothing when it may.
std::optional<std::string> refusalOfArchive(Vorlu& vorlu, const std::string& path) {
  std::optional<std::string> refusal;
  LineReader lines([&](std::string_view line) {
    if (!refusal) refusal = refusalOfMember(line);
  });
  Command listing = tar({"--numeric-owner", "-tvf", path});
  listing.mergeStandardError = false;
  listing.onOutput = [&](std::string_view piece) { lines.feed(piece); };
  const ProcessResult result = runTool(vorlu.platform.processes, vorlu.log, listing);
  lines.finish();
  if (!refusal && result.status != 0) refusal = "it is damaged or no archive";
  return refusal;
}

/// tar ends with 1 when it could not give a file to the archive's user, which hurts nothing.
bool isHarmless(std::string_view message) {
  return message.empty() || message.find(": Can't set user=") != std::string_view::npos ||
         message.find("Error exit delayed from previous errors") != std::string_view::npos;
}

/// Why the unpacked tree can't be used; nothing when it is whole.
std::optional<std::string> unpack(Vorlu& vorlu, const std::string& path) {
  const ProcessResult result = runTool(vorlu.platform.processes, vorlu.log, tar({"-xf", path, "-C", paths::output}));
  if (result.status == 0) return std::nullopt;
  std::optional<std::string> fault;
  LineReader messages([&](std::string_view line) {
    if (!fault && !isHarmless(line)) fault = std::string(line);
  });
  messages.feed(result.output);
  messages.finish();
  if (!fault && (result.status != 1 || result.output.empty())) fault = "it could not be unpacked to its end";
  return fault;
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

std::optional<std::string> refusalOfMember(std::string_view line) {
  if (line.size() < 10) return fmt::format("its listing can't be read: {}", line);
  const std::string_view name = nameColumn(line);
  const char kind = line[0];
  const bool directory = kind == 'd';
  if (std::string_view("bcps").find(kind) != std::string_view::npos) return fmt::format("{} is no file", name);
  const auto hasBit = [&](std::size_t at) { return line[at] == 's' || line[at] == 'S'; };
  if (hasBit(3) || (hasBit(6) && !directory)) return fmt::format("{} would run as another user", name);
  // Parts that go up are refused even where they come down again: the way may lead through a link.
  const bool goesUp = fmt::format("/{}/", name).find("/../") != std::string::npos && kind != 'l' && kind != 'h';
  if (goesUp || leavesFolder(name)) return fmt::format("{} lies outside", name);
  if ((kind == 'l' && linkLeavesFolder(name)) || (kind == 'h' && hardLinkLeavesFolder(name)))
    return fmt::format("{} points outside", name);
  return std::nullopt;
}

void extractArchive(Vorlu& vorlu, const std::string& path) {
  vorlu.platform.files.createDirectory(paths::output, {0755, "root", "wheel"});
  emptyOutput(vorlu);
  std::optional<std::string> fault = refusalOfArchive(vorlu, path);
  if (!fault) fault = unpack(vorlu, path);
  if (!fault) {
    vorlu.log("Extraction complete");
    return;
  }
  vorlu.log(fmt::format("Error: Could not extract {} - {}", path, trimmed(*fault)));
  emptyOutput(vorlu);
}

}  // namespace vorlu
