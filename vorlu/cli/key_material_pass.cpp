#include "vorlu/cli/key_material_pass.h"

#include "vorlu/server/key_material.h"
#include "vorlu/vorlu.h"

namespace vorlu {

void obtainKeyMaterial(Vorlu& vorlu) {
  if (hasKeyMaterial(vorlu)) return;
  vorlu.log("Keychain data required for Vorlu initialisation was not found. Obtaining data...");
  populateKeychain(vorlu, true);
  if (!vorlu.keys.keychainWriteFailed) updateRunData(vorlu, RunDataSelector::secretsTimestamp);
  if (!hasKeyMaterial(vorlu)) {
    vorlu.log("Error: Keychain data required for Vorlu initialisation could not be obtained");
  }
}

bool requireKeychainItems(Vorlu& vorlu, bool stamped) {
  for (const KeychainEntry& entry : keychainEntries) {
    if (hasKeychainItem(vorlu, entry)) continue;
    vorlu.log(entry.missing);
    populateKeychain(vorlu, true);
    if (vorlu.keys.keychainWriteFailed) return false;
    if (stamped) updateRunData(vorlu, RunDataSelector::secretsTimestamp);
  }
  return true;
}

}  // namespace vorlu
