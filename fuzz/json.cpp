#include "vorlu/state/json.h"

#include <nlohmann/json.hpp>

#include "fuzz/target.h"
#include "vorlu/detection/app_inventory.h"
#include "vorlu/reporting/encrypt_report.h"
#include "vorlu/server/blueprint.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/self_update_manifest.h"
#include "vorlu/state/error_record.h"

namespace vorlu::fuzz {
namespace {

/// What decodes is JSON by another parser's word, and comes back the same from either layout.
template <class Document>
void readAndWrite(std::string_view input) {
  const auto decoded = decodeJson<Document>(std::string(input));
  if (!decoded) return expect(!decoded.error().empty(), "a failure has a text");
  expect(nlohmann::json::accept(input), "only JSON decodes", input);
  const std::string compact = encodeJson(*decoded, JsonLayout::compact);
  const auto again = decodeJson<Document>(compact);
  expect(again.ok(), "what was encoded decodes", compact, again ? "" : again.error());
  expectSame(encodeJson(*again, JsonLayout::compact), compact, "encoding is stable");
  const auto fromPretty = decodeJson<Document>(encodeJson(*decoded, JsonLayout::pretty));
  expect(fromPretty.ok(), "the pretty layout decodes", compact);
  expectSame(encodeJson(*fromPretty, JsonLayout::compact), compact, "both layouts say the same");
}

}  // namespace

/// The server's documents and the agent's own: catalog, manifest, secrets, report, errors, inventory.
FUZZ_TARGET(json) {
  readAndWrite<std::vector<AppBlueprints>>(input);
  readAndWrite<std::vector<SelfUpdateStruct>>(input);
  readAndWrite<VorluSecrets>(input);
  readAndWrite<EncryptedJson>(input);
  readAndWrite<ErrorStruct>(input);
  readAndWrite<AppInventory>(input);
}

}  // namespace vorlu::fuzz
