#include "vorlu/server/key_material.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "vorlu/server/encryption_utility.h"
#include "vorlu/server/keychain_util.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/json.h"
#include "vorlu/vorlu.h"

namespace vorlu {

const std::array<KeychainEntry, 3> keychainEntries{{
    {"com.mosk.vorlu", "Vorlu signature not found in keychain. Obtaining signature...",
     "Vorlu signature successfully added to the keychain", "Error: Vorlu signature could not be added to the keychain",
     &KeyMaterial::serverData, false},
    {"com.mosk.vorlu.key", "Vorlu key not found in keychain. Obtaining key...",
     "Vorlu key successfully added to the keychain", "Error: Vorlu key could not be added to the keychain",
     &KeyMaterial::serverSignature, true},
    {"com.mosk.vorlu.seckey", "Vorlu private key not found in keychain. Obtaining private key...",
     "Vorlu certificate successfully added to the keychain",
     "Error: Vorlu private key could not be added to the keychain", &KeyMaterial::serverSec, false},
}};

namespace {

KeychainUtil keychainOf(Vorlu& vorlu) {
  return {vorlu.platform.keychain, vorlu.log};
}

std::string missingComponents(Vorlu& vorlu) {
  return fmt::format(
      "Error: Could not obtain key components required for Vorlu. Please review the Vorlu network requirements. If the "
      "issue persists, contact {}",
      vorlu.site.supportContact());
}

/// The secret, kept once it could be read; empty, with a logged error, when it can't.
const std::string& readSigningSecret(Vorlu& vorlu) {
  std::string& secret = vorlu.keys.signingSecret;
  if (!secret.empty()) return secret;
  if (Result<std::string> read = vorlu.site.signingSecret()) {
    secret = std::move(*read);
  } else {
    vorlu.log(fmt::format("Error processing security data - {}", read.error()));
  }
  return secret;
}

/// Whether none of the items is left.
bool removeItems(Vorlu& vorlu) {
  bool removed = true;
  for (const KeychainEntry& entry : keychainEntries) {
    removed = keychainOf(vorlu).deleteKeychainItem(entry.service).ok() && removed;
  }
  return removed;
}

bool serverGaveAll(const KeyMaterial& keys) {
  return std::all_of(keychainEntries.begin(), keychainEntries.end(),
                     [&keys](const KeychainEntry& entry) { return !(keys.*entry.text).empty(); });
}

void storeFetchedTexts(Vorlu& vorlu) {
  for (const KeychainEntry& entry : keychainEntries) {
    if (!keychainOf(vorlu).writeKeychainItem(entry.service, vorlu.keys.*entry.text, entry.invisible)) {
      vorlu.keys.keychainWriteFailed = true;
      fatalStop(vorlu, entry.notAdded);
    }
    vorlu.log(entry.added, silent);
  }
}

/// The three items without decoys, in the order of `keychainEntries`.
using KeychainTexts = std::array<std::string, 3>;

KeychainTexts readKeychainTexts(Vorlu& vorlu) {
  KeychainTexts texts;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    texts[i] = stripDecoys(vorlu.site.sealed(), keychainOf(vorlu).readKeychainItem(keychainEntries[i].service));
  }
  return texts;
}

/// What the server has just given. The keychain may hold another agent's by now, or parts of both: agents that start at
/// the same time fetch at the same time.
KeychainTexts fetchedTexts(Vorlu& vorlu) {
  KeychainTexts texts;
  for (std::size_t i = 0; i < texts.size(); ++i)
    texts[i] = stripDecoys(vorlu.site.sealed(), vorlu.keys.*keychainEntries[i].text);
  return texts;
}

bool anyEmpty(const KeychainTexts& texts) {
  return std::any_of(texts.begin(), texts.end(), [](const std::string& text) { return text.empty(); });
}

KeychainTexts fetchKeychainTextsAnew(Vorlu& vorlu) {
  vorlu.log("Could not import Vorlu ceritifcates from keychain. Obtaining certificate data...");
  populateKeychain(vorlu, false);
  KeychainTexts texts = fetchedTexts(vorlu);
  if (anyEmpty(texts)) {
    fatalStop(vorlu, fmt::format("Error: Could not obtain certificates from the keychain. Please review the Vorlu "
                                 "network requirements. If the issue persists, contact {}",
                                 vorlu.site.supportContact()));
  }
  return texts;
}

/// The plain text of the block, under the AES key that the agent's private key unwraps.
Result<std::string> decipherBlock(Vorlu& vorlu, const KeychainTexts& components) {
  EncryptionUtility crypto(vorlu.platform.security, vorlu.log);
  const auto& [block, wrappedKey, iv] = components;
  const Result<std::string> key = crypto.rsaDecrypt(wrappedKey, vorlu.site.privateKey());
  if (!key) return key.failure();
  return crypto.aesDecrypt(block, *key, iv);
}

/// The inventory of the three texts. The failure's text is the one that stops the run.
Result<VorluSecrets> decipherInventory(Vorlu& vorlu, const KeychainTexts& texts) {
  EncryptionUtility crypto(vorlu.platform.security, vorlu.log);
  KeychainTexts components;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    Result<std::string> bytes = crypto.base64Decode(texts[i]);
    if (!bytes) {
      return Failure{
          fmt::format("Error: Vorlu terminated because keychain components could not be converted due to an unknown "
                      "error. If the issue persists, contact {}",
                      vorlu.site.supportContact())};
    }
    components[i] = std::move(*bytes);
  }
  Result<std::string> plain = decipherBlock(vorlu, components);
  Result<VorluSecrets> secrets =
      plain ? decodeJson<VorluSecrets>(std::move(*plain)) : Result<VorluSecrets>(plain.failure());
  if (!secrets) {
    return Failure{
        fmt::format("Error: Vorlu terminated because the keychain data could not be decrypted - {}", secrets.error())};
  }
  return secrets;
}

[[noreturn]] void stopOnCorruptStore(Vorlu& vorlu) {
  const std::string& contact = vorlu.site.supportContact();
  fatalStop(vorlu,
            fmt::format("Error: Vorlu terminated because the Vorlu keychain data appears to be corrupt. If the issue "
                        "persists, contact {}",
                        contact),
            fmt::format("Error: Vorlu terminated because the Vorlu keychain data is corrupt. If the issue persists, "
                        "contact {}",
                        contact));
}

}  // namespace

bool hasKeychainItem(Vorlu& vorlu, const KeychainEntry& entry) {
  return !keychainOf(vorlu).readKeychainItem(entry.service).empty();
}

bool hasKeyMaterial(Vorlu& vorlu) {
  return std::all_of(keychainEntries.begin(), keychainEntries.end(),
                     [&vorlu](const KeychainEntry& entry) { return hasKeychainItem(vorlu, entry); }) &&
         !readSigningSecret(vorlu).empty();
}

void deleteKeychainItems(Vorlu& vorlu) {
  if (!removeItems(vorlu)) vorlu.log("Error: Could not access macOS keychain");
}

void populateKeychain(Vorlu& vorlu, bool /*refresh*/) {
  vorlu.keys.keychainWriteFailed = false;
  static_cast<void>(removeItems(vorlu));  // what stays shows when its successor is added
  fetchServerData(vorlu);
  if (!serverGaveAll(vorlu.keys)) fetchServerData(vorlu);
  if (!serverGaveAll(vorlu.keys)) {
    const std::string text = missingComponents(vorlu);
    vorlu.log(text);
    vorlu.log.logForJamf(text);
    vorlu.keys.keychainWriteFailed = true;
    return;
  }
  storeFetchedTexts(vorlu);
  vorlu.keys.inventory.reset();
}

void openInventory(Vorlu& vorlu) {
  KeychainTexts texts = readKeychainTexts(vorlu);
  const bool missing = anyEmpty(texts);
  if (missing) texts = fetchKeychainTextsAnew(vorlu);
  Result<VorluSecrets> secrets = decipherInventory(vorlu, texts);
  if (!secrets && !missing) {  // sealed for an agent with other keys, or damaged
    secrets = decipherInventory(vorlu, fetchKeychainTextsAnew(vorlu));
  }
  if (!secrets) fatalStop(vorlu, secrets.error());
  if (!secrets->SecInventory || secrets->SecInventory->empty()) {
    const std::string& contact = vorlu.site.supportContact();
    fatalStop(vorlu,
              fmt::format(
                  "Error: Vorlu terminated because the Vorlu keychain data is empty. If the issue persists, contact {}",
                  contact),
              fmt::format(
                  "Error: Vorlu terminated because the Vorlu keychain data isempty. If the issue persists, contact {}",
                  contact));
  }
  vorlu.keys.inventory = std::move(*secrets);
}

std::string fetchInventoryValue(Vorlu& vorlu, const std::string& label, bool wantToken) {
  if (!vorlu.keys.inventory) openInventory(vorlu);
  const std::vector<SecInventory>& services = *vorlu.keys.inventory->SecInventory;
  const auto found = std::find_if(services.begin(), services.end(),
                                  [&label](const SecInventory& service) { return service.label == label; });
  if (found == services.end()) return {};
  const std::optional<std::string>& value = wantToken ? found->token : found->url;
  std::string plain = stripDecoys(vorlu.site.sealed(), value.value_or(""));
  if (plain.empty()) stopOnCorruptStore(vorlu);
  return plain;
}

const std::string& loadSigningSecret(Vorlu& vorlu) {
  if (readSigningSecret(vorlu).empty() && readSigningSecret(vorlu).empty()) {
    fatalStop(vorlu, missingComponents(vorlu));
  }
  return vorlu.keys.signingSecret;
}

}  // namespace vorlu
