#include "vorlu/state/work_notes.h"

#include <fmt/format.h>

#include <algorithm>

#include "vorlu/state/duplicates.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/run_data.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::size_t longestNote = 64 * 1024;

bool isAtWork(const Duplicates& agents, pid_t owner) {
  const auto isOwner = [owner](const Duplicate& agent) { return agent.pid == owner; };
  return std::any_of(agents.ahead.begin(), agents.ahead.end(), isOwner) ||
         std::any_of(agents.behind.begin(), agents.behind.end(), isOwner) ||
         std::find(agents.above.begin(), agents.above.end(), owner) != agents.above.end();
}

/// All notes of the kind, by the owners that their names tell.
std::vector<WorkNote> allNotes(FileManager& files, std::string_view kind) {
  std::vector<WorkNote> notes;
  const auto names = files.list(paths::run);
  if (!names) return notes;
  const std::string prefix = fmt::format("{}-", kind);
  for (const std::string& name : *names) {
    if (!name.starts_with(prefix)) continue;
    const auto owner = parseCount(name.substr(prefix.size()));
    if (owner && *owner > 0) notes.push_back({std::string(kind), static_cast<pid_t>(*owner)});
  }
  return notes;
}

}  // namespace

std::string WorkNote::path() const {
  return fmt::format("{}/{}-{}", paths::run, kind, owner);
}

Status WorkNote::write(FileManager& files) const {
  return files.writeAtomically(path(), text, {0640, "root", "wheel"});
}

std::vector<WorkNote> notesOfEndedRuns(Vorlu& vorlu, std::string_view kind) {
  FileManager& files = vorlu.platform.files;
  std::vector<WorkNote> notes = allNotes(files, kind);
  if (notes.empty()) return notes;
  const Duplicates agents = findDuplicatesByName(vorlu);
  if (!agents.searched) return {};
  std::erase_if(notes, [&](WorkNote& note) {
    if (isAtWork(agents, note.owner)) return true;
    const auto text = files.read(note.path(), longestNote);
    if (text) note.text = *text;
    return !text;  // it stays for a run that can read it: removed, an app that stands aside would be lost
  });
  return notes;
}

}  // namespace vorlu
