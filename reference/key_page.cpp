#include "reference/key_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace vorlu::reference {
namespace {

constexpr std::string_view mark = "<!-- scripts/reference writes what follows -->\n";

/// A bar would end the cell.
std::string cell(std::string_view text) {
  std::string safe;
  for (const char c : text) safe += c == '|' ? "\\|" : std::string(1, c);
  return safe;
}

std::string valuesOf(const KeyReference& key) {
  const KeyNote& note = key.note;
  if (!note.choices.empty()) {
    std::string list;
    for (const std::string_view choice : note.choices) list += fmt::format("{}`{}`", list.empty() ? "" : ", ", choice);
    return list + (note.choicesInAnyCase ? " in any letter case" : "");
  }
  std::string values;
  if (note.range && note.range->highest != KeyRange{}.highest) {
    values = fmt::format("{} to {}", note.range->lowest, note.range->highest);
  } else if (note.range) {
    values = fmt::format("from {}", note.range->lowest);
  }
  if (!note.unit.empty()) values += fmt::format("{}{}", values.empty() ? "" : " ", note.unit);
  if (!note.example.empty()) values += fmt::format("{}such as `{}`", values.empty() ? "" : ", ", note.example);
  return values;
}

std::string whatItDoes(const KeyNote& note) {
  std::string text = cell(note.help);
  if (!note.needs.empty()) text += fmt::format(" Counts together with `{}`.", note.needs);
  if (note.unused) text += " The agent takes no action on it.";
  return text;
}

std::string row(const KeyReference& key) {
  return fmt::format("| `{}` | {} | {} | {} | {} |\n", key.key(), nameOf(key.type),
                     key.defaultText ? fmt::format("`{}`", cell(*key.defaultText)) : "", cell(valuesOf(key)),
                     whatItDoes(key.note));
}

constexpr std::string_view head = "\n| Key | Type | Default | Values | |\n|---|---|---|---|---|\n";

/// The keys straight below a section, and the sections there as rows that lead to their own tables.
std::string tableOf(const std::vector<KeyReference>& keys, std::string_view section) {
  std::string table(head);
  for (const KeyReference& key : keys)
    if (key.section() == section && key.type != KeyType::section) table += row(key);
  return table;
}

/// The names of the keys below a section, to see which sections are alike.
std::string shapeOf(const std::vector<KeyReference>& keys, std::string_view section) {
  std::string names;
  for (const KeyReference& key : keys)
    if (key.section() == section) names += std::string(key.key()) + ",";
  return names;
}

}  // namespace

std::string sectionTables(const std::vector<KeyReference>& keys) {
  std::string text;
  std::map<std::string, std::string> first;  // of each shape
  for (const KeyReference& key : keys) {
    if (key.type != KeyType::section) continue;
    const bool top = key.section().empty();
    text += fmt::format("\n{} `{}`\n\n{}\n", top ? "##" : "###", key.path, key.note.help);
    const auto [known, isNew] = first.try_emplace(shapeOf(keys, key.path), key.path);
    text += isNew ? tableOf(keys, key.path) : fmt::format("\nThe keys are those of `{}`.\n", known->second);
  }
  return text;
}

std::string keyTable(const std::vector<KeyReference>& keys) {
  return tableOf(keys, "");
}

std::string withKeys(std::string_view page, std::string_view tables) {
  const std::size_t end = page.find(mark);
  return fmt::format("{}{}{}", page.substr(0, end), mark, tables);
}

}  // namespace vorlu::reference
