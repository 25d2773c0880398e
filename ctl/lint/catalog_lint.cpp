#include "ctl/lint/catalog_lint.h"

#include <fmt/format.h>

#include "ctl/lint/entry_rules.h"
#include "ctl/lint/json_source.h"
#include "ctl/lint/key_check.h"
#include "vorlu/server/blueprint_keys.h"
#include "vorlu/state/json.h"

namespace vorlu::ctl {
namespace {

constexpr const char* const unreadable = "no Mac can read a catalog with this";

void checkEntry(EntryLint& entry, const SyntaxCheck& syntax) {
  checkIdentity(entry);
  checkVersions(entry);
  checkLocation(entry);
  checkPlaceholders(entry);
  // An entry for the inventory alone needs no installer.
  if (!entry.app.installsAllowed.value_or(true) && !entry.app.updatesAllowed.value_or(true)) return;
  checkDownload(entry);
  checkVerification(entry);
  checkInstall(entry);
  checkScripts(entry, syntax);
}

void checkEntries(LocatedValue& catalog, Findings& findings, const SyntaxCheck& syntax) {
  const KeyCheck keys(blueprintKeys(), unreadable);
  std::vector<AppBlueprints> apps;
  std::vector<EntryLint> entries;
  apps.reserve(catalog.elements.size());  // entries refer to them
  entries.reserve(catalog.elements.size());
  for (std::size_t index = 0; index < catalog.elements.size(); ++index) {
    LocatedValue& element = catalog.elements[index];
    RecordLint lint(element, elementPath("", index), findings);
    if (element.kind == NodeKind::dictionary)
      keys.check(element, lint);
    else
      lint.error("", fmt::format("is {}, and has to be an object: {}", describe(element.kind), unreadable),
                 "write the entry in braces");
    const bool isEntry = element.kind == NodeKind::dictionary;
    apps.push_back(isEntry ? decodeLocated<AppBlueprints>(element) : AppBlueprints{});
    entries.push_back({apps.back(), std::move(lint)});
    if (isEntry) checkEntry(entries.back(), syntax);
  }
  checkUniqueness(entries);
}

/// The agent's own reader has the last word.
void checkWithAgent(std::string text, Findings& findings) {
  if (findings.hasErrors()) return;
  if (const auto read = decodeJson<std::vector<AppBlueprints>>(std::move(text)); !read)
    findings.error({1, 1}, "", fmt::format("the agent can't read this catalog: {}", read.error()),
                   "mend what it names");
}

}  // namespace

Findings lintCatalog(std::string text, const SyntaxCheck& syntax) {
  Findings findings;
  std::optional<LocatedValue> catalog = readLocatedJson(text, findings);
  if (!catalog) return findings;
  if (text.starts_with("\xef\xbb\xbf"))
    findings.error({1, 1}, "", fmt::format("the file begins with a byte order mark: {}", unreadable),
                   "save it as UTF-8 without a byte order mark");
  if (catalog->kind != NodeKind::array) {
    findings.error(
        catalog->at, "",
        fmt::format("a catalog is an array of entries, and this is {}: {}", describe(catalog->kind), unreadable),
        "put the entries into square brackets");
    return findings;
  }
  if (catalog->elements.empty())
    findings.error(catalog->at, "", "the catalog has no entry, and Macs without an allowed list stop with an error",
                   "add an entry");
  checkEntries(*catalog, findings, syntax);
  checkWithAgent(std::move(text), findings);
  return findings;
}

}  // namespace vorlu::ctl
