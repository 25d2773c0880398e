#include <fmt/format.h>

#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "seal/keys.h"
#include "vorlu/server/key_material.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/json.h"

namespace vorlu::fuzz {
namespace {

const std::string aesKey(32, 'k');
const std::string iv(16, 'i');

/// The AES key, wrapped for the agent of this build.
const std::string& wrappedKey() {
  static const std::string wrapped = [] {
    const auto keys = seal::readServerKeys(VORLU_SITE_KEYS);
    expect(keys.ok(), "the build's keys can be read", keys ? "" : keys.error());
    return keys->agent.encrypt(aesKey);
  }();
  return wrapped;
}

void store(const std::array<std::string, 3>& texts) {
  for (std::size_t i = 0; i < texts.size(); ++i)
    FuzzedMac::shared().keychain.add({keychainEntries[i].service, "Vorlu", texts[i], "", false});
}

/// The document of a server that holds the keys: what decodes is found by its label, all else ends the run.
void openSealed(const std::string& document) {
  FuzzedMac& mac = FuzzedMac::shared();
  Vorlu& vorlu = mac.fresh();
  const auto block = mac.security.aesEncrypt(document, aesKey, iv);
  store({base64Encode(*block), base64Encode(wrappedKey()), base64Encode(iv)});
  const auto secrets = decodeJson<VorluSecrets>(document);
  const bool some = secrets && secrets->SecInventory && !secrets->SecInventory->empty();
  const std::string label = some ? secrets->SecInventory->front().label.value_or("") : std::string("none");
  std::string url;
  const auto ended = FuzzedMac::endOf([&] { url = fetchInventoryValue(vorlu, label, false); });
  if (!some) return expect(ended == 1, "a document without services ends the run", document);
  const SecInventory* found = nullptr;
  for (const SecInventory& service : *secrets->SecInventory)
    if (!found && service.label == label) found = &service;
  const std::string expected = found ? stripDecoys(sealedSite, found->url.value_or("")) : "";
  if (found && expected.empty()) return expect(ended == 1, "an empty value ends the run", document);
  expect(!ended, "a whole inventory opens", document);
  expectSame(url, expected, "the value of the label");
}

}  // namespace

/// Key material from keychain and server. The first byte chooses: three texts of the keychain, the server's answer, or
/// a document that is enciphered as it should be.
FUZZ_TARGET(secrets) {
  Input in(input);
  FuzzedMac& mac = FuzzedMac::shared();
  switch (in.byte() % 3) {
    case 0: {
      Vorlu& vorlu = mac.fresh();
      store({in.text(), in.text(), in.text()});
      mac.urls.body = in.rest();
      expect(FuzzedMac::endOf([&] { fetchInventoryValue(vorlu, liveBlueprints, true); }) == 1,
             "nobody seals for this agent without its key", input);
      break;
    }
    case 1: {
      Vorlu& vorlu = mac.fresh();
      mac.urls.body = in.rest();
      FuzzedMac::endOf([&] { populateKeychain(vorlu, true); });
      const bool all =
          !vorlu.keys.serverData.empty() && !vorlu.keys.serverSignature.empty() && !vorlu.keys.serverSec.empty();
      expect(all || vorlu.keys.keychainWriteFailed, "part of the key material is told", input);
      break;
    }
    default:
      openSealed(in.rest());
  }
}

}  // namespace vorlu::fuzz
