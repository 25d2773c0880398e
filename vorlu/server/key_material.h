#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu {

struct Vorlu;

/// One service of the server.
struct SecInventory {
  std::optional<std::string> label;
  std::optional<std::string> url;
  std::optional<std::string> token;
  static constexpr auto fields() {
    return std::array{field<&SecInventory::label>("label"), field<&SecInventory::url>("url"),
                      field<&SecInventory::token>("token")};
  }
};

struct VorluSecrets {
  std::optional<std::vector<vorlu::SecInventory>> SecInventory;
  static constexpr auto fields() { return std::array{field<&VorluSecrets::SecInventory>("SecInventory")}; }
};

/// The key material of this process.
struct KeyMaterial {
  std::optional<VorluSecrets> inventory;  ///< nothing: not opened yet
  std::string serverData;                 ///< the enciphered block, as the server last gave it
  std::string serverSignature;            ///< the wrapped AES key
  std::string serverSec;                  ///< the IV
  std::string signingSecret;
  bool keychainWriteFailed = false;
};

/// Labels of the inventory.
inline constexpr const char* liveBlueprints = "live_blueprints";
inline constexpr const char* testingBlueprintsLabel = "testing_blueprints";
inline constexpr const char* selfUpdates = "SelfUpdatesNew";
inline constexpr const char* reportsLabel = "reports";

/// Whether the three keychain items and the signing secret can all be had: nothing that this process must fetch.
bool hasKeyMaterial(Vorlu& vorlu);

/// The three keychain items in the order in which they are tested and written.
struct KeychainEntry {
  const char* service;
  const char* missing;   ///< log line when the item isn't there at run start
  const char* added;     ///< log line of a success
  const char* notAdded;  ///< log line of a failure
  std::string KeyMaterial::*text;
  bool invisible;
};
extern const std::array<KeychainEntry, 3> keychainEntries;
bool hasKeychainItem(Vorlu& vorlu, const KeychainEntry& entry);

/// Fetches the key material from the server, with one repetition, and replaces the keychain items; an opened inventory
/// is forgotten then. A server that gives nothing sets `keychainWriteFailed` and leaves an opened inventory in use; a
/// keychain that can't be written ends the run with 1.
void populateKeychain(Vorlu& vorlu, bool refresh);
void deleteKeychainItems(Vorlu& vorlu);

/// Deciphers the keychain items into `keys.inventory`. Items that are missing or can't be deciphered are fetched anew
/// once; ends the run with 1 when that doesn't help.
void openInventory(Vorlu& vorlu);

/// URL or token of the first record of a label; empty when the label isn't there. A record without the value ends the
/// run with 1, as does key material that can't be had or opened.
std::string fetchInventoryValue(Vorlu& vorlu, const std::string& label, bool wantToken);

/// The secret of signed requests, loaded at the first use; ends the run with 1 when it can't be had.
const std::string& loadSigningSecret(Vorlu& vorlu);

}  // namespace vorlu
