#include "reference/documents.h"

#include "reference/json_schema.h"
#include "reference/key_page.h"
#include "reference/profile_manifest.h"
#include "reference/sample_profile.h"
#include "reference/text_file.h"
#include "vorlu/server/blueprint_keys.h"

namespace vorlu::reference {

Result<std::vector<Document>> documents(const std::string& sourceTree) {
  const auto preferences = preferenceKeys();
  const auto blueprint = blueprintKeys();
  std::vector<Document> made = {{"packaging/preferences.schema.json", preferencesSchema(preferences)},
                                {"packaging/blueprint.schema.json", catalogSchema(blueprint)},
                                {"packaging/com.mosk.vorlu.preferences.manifest.plist", profileManifest(preferences)},
                                {"packaging/sample.mobileconfig", sampleProfile()}};
  for (const auto& [path, table] : {std::pair{"docs/preferences.md", sectionTables(preferences)},
                                    std::pair{"docs/catalog.md", keyTable(blueprint)}}) {
    const Result<std::string> page = readTextFile(sourceTree + "/" + path);
    if (!page) return page.failure();
    made.push_back({path, withKeys(*page, table)});
  }
  return made;
}

}  // namespace vorlu::reference
