#include <fmt/format.h>

#include "refserver/secrets.h"
#include "tests/unit/server/server_fixture.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/keychain_util.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/encoding.h"

namespace vorlu::test {
namespace {

using KeyMaterialFlow = ServerFixture;
using ::testing::ElementsAre;

const std::string contact = "If the issue persists, contact support@example.com";
const std::string noComponents =
    "Error: Could not obtain key components required for Vorlu. Please review the Vorlu network requirements. " +
    contact;
const std::string corruptStore =
    "Error: Vorlu terminated because the Vorlu keychain data appears to be corrupt. " + contact;
const std::string corruptForJamf = "Error: Vorlu terminated because the Vorlu keychain data is corrupt. " + contact;
const char* const keychainFile = "/Library/Keychains/vorlu.keychain.json";

std::string inventory(const std::string& records) {
  return fmt::format(R"({{"SecInventory": [{}]}})", records);
}

TEST_F(KeyMaterialFlow, EmptyKeychainIsFilledAtTheFirstQuestion) {
  Vorlu& vorlu = newRun();
  EXPECT_FALSE(hasKeyMaterial(vorlu));
  EXPECT_EQ(fetchInventoryValue(vorlu, liveBlueprints, true), "live-token");
  EXPECT_EQ(fetchInventoryValue(vorlu, liveBlueprints, false), base + "/live");
  EXPECT_EQ(fetchInventoryValue(vorlu, "unknown label", false), "");
  EXPECT_TRUE(hasKeyMaterial(vorlu));
  EXPECT_THAT(logged(), joined({noKeychainData}, keysAdded));
  EXPECT_THAT(requests(), ElementsAre("GET /secrets 200"));
  EXPECT_FALSE(vorlu.keys.keychainWriteFailed);

  Vorlu& next = newRun();
  EXPECT_EQ(fetchInventoryValue(next, liveBlueprints, true), "live-token");
  EXPECT_THAT(logged(), ElementsAre());
  EXPECT_THAT(requests(), ElementsAre());
  deleteKeychainItems(next);
  EXPECT_FALSE(hasKeyMaterial(next));
}

TEST_F(KeyMaterialFlow, ServerThatGivesNothingIsAskedTwice) {
  Vorlu& vorlu = newRunWithKeys();
  answer("/secrets", 200, R"({"data": "d", "signature": "s", "sec": ""})");
  populateKeychain(vorlu, true);
  EXPECT_TRUE(vorlu.keys.keychainWriteFailed);
  EXPECT_FALSE(hasKeyMaterial(vorlu));
  EXPECT_THAT(requests(), ElementsAre("GET /secrets 200", "GET /secrets 200"));
  EXPECT_THAT(logged(), ElementsAre(noComponents));
  EXPECT_THAT(toldJamf(), ElementsAre(noComponents));

  onRequest = nullptr;
  populateKeychain(vorlu, true);
  EXPECT_FALSE(vorlu.keys.keychainWriteFailed) << "a later success counts";
}

TEST_F(KeyMaterialFlow, BlockForOtherKeysIsFetchedAnewOnce) {
  const auto other = seal::RsaKey::generate(2048);
  const std::string document = inventory(R"({"label": "live_blueprints", "url": "u", "token": "t"})");
  answer("/secrets", 200, secretsAnswer(document, other));
  Vorlu& healed = newRunWithKeys();
  onRequest = nullptr;
  EXPECT_EQ(fetchInventoryValue(healed, liveBlueprints, true), "live-token");
  EXPECT_THAT(logged(), joined({noKeychainData}, keysAdded));

  answer("/secrets", 200, secretsAnswer(document, other));
  Vorlu& lost = newRunWithKeys();
  EXPECT_EQ(endOf([&] { fetchInventoryValue(lost, liveBlueprints, true); }), 1);
  const std::string undeciphered =
      "Error: Vorlu terminated because the keychain data could not be decrypted - Error Domain=DecryptionError Code=0 "
      "\"Decryption failed\"";
  EXPECT_THAT(logged(), joined(joined({noKeychainData}, keysAdded), {undeciphered, "Exiting..."}));
  EXPECT_THAT(toldJamf(), ElementsAre(undeciphered));
  EXPECT_THAT(requests(), ElementsAre("GET /secrets 200"));
  EXPECT_EQ(runData().CurrentRunType, "N/A");
}

TEST_F(KeyMaterialFlow, DamagedBlocksEndTheRun) {
  const std::string undeciphered = "Error: Vorlu terminated because the keychain data could not be decrypted - ";
  const std::string empty = "Error: Vorlu terminated because the Vorlu keychain data is empty. " + contact;
  const std::string emptyForJamf = "Error: Vorlu terminated because the Vorlu keychain data isempty. " + contact;
  const auto& key = agentKeys().agent;
  const std::string shortKey =
      fmt::format(R"({{"data": "{}", "signature": "{}", "sec": "{}"}})", base64Encode(std::string(32, 'd')),
                  base64Encode(key.encrypt(std::string(31, 'k'))), base64Encode(std::string(16, 'i')));
  const std::string unconverted =
      "Error: Vorlu terminated because keychain components could not be converted due to an unknown error. ";
  const auto expectEnd = [&](const char* what, const std::string& given, const Lines& lines, const std::string& jamf) {
    Vorlu& vorlu = newRun();
    deleteKeychainItems(vorlu);
    answer("/secrets", 200, given);
    EXPECT_EQ(endOf([&] { fetchInventoryValue(vorlu, liveBlueprints, true); }), 1) << what;
    EXPECT_THAT(lastOf(logged(), lines.size() + 1), linesThatBegin(joined(lines, {"Exiting..."}))) << what;
    EXPECT_THAT(toldJamf(), ElementsAre(::testing::StartsWith(jamf))) << what;
  };
  expectEnd("Base64", R"({"data": "!", "signature": "QUJD", "sec": "QUJD"})",
            {"Error: Failed to decode Base64 string (!)", unconverted + contact}, unconverted);
  expectEnd("AES key", shortKey, {"Error in AES operation: -4300", undeciphered + "Error Domain=CryptoError"},
            undeciphered);
  expectEnd("JSON", secretsAnswer("[]", key), {undeciphered + "typeMismatch("}, undeciphered);
  expectEnd("no list", secretsAnswer("{}", key), {empty}, emptyForJamf);
  expectEnd("empty list", secretsAnswer(inventory(""), key), {empty}, emptyForJamf);
}

TEST_F(KeyMaterialFlow, RecordsWithoutAValueAreACorruptStore) {
  const auto& decoys = agentKeys().decoys;
  const std::string spliced = decoys[0] + "to" + decoys[3] + "k" + decoys[3] + "en" + decoys[9];
  const std::string records = R"({"label": "spliced", "token": ")" + spliced + R"(", "url": null},
                                 {"label": "hollow", "token": ")" +
                              decoys[3] + R"(", "url": ""},
                                 {"label": "hollow", "token": "second", "url": "second"})";
  answer("/secrets", 200, secretsAnswer(inventory(records), agentKeys().agent));
  EXPECT_EQ(fetchInventoryValue(newRunWithKeys(), "spliced", true), "token");
  for (const auto& [label, wantToken] : {std::pair("spliced", false), {"hollow", true}, {"hollow", false}}) {
    EXPECT_EQ(endOf([&, name = label, token = wantToken] { fetchInventoryValue(newRun(), name, token); }), 1) << label;
    EXPECT_THAT(logged(), ElementsAre(corruptStore, "Exiting..."));
    EXPECT_THAT(toldJamf(), ElementsAre(corruptForJamf));
  }
}

TEST_F(KeyMaterialFlow, UnreadableKeychainIsReplacedOrEndsTheRun) {
  mac.write(keychainFile, "{ no keychain");
  Vorlu& vorlu = newRun();
  EXPECT_EQ(fetchInventoryValue(vorlu, liveBlueprints, true), "live-token");
  const Lines noAccess(3, "Error: Could not access macOS keychain");
  EXPECT_THAT(logged(), joined(joined(noAccess, {noKeychainData}), keysAdded));

  mac.files.remove(keychainFile);
  mac.makeFolder(keychainFile);
  Vorlu& stuck = newRun();
  EXPECT_EQ(endOf([&] { populateKeychain(stuck, false); }), 1);
  EXPECT_TRUE(stuck.keys.keychainWriteFailed);
  EXPECT_THAT(logged(), ElementsAre("Error: Vorlu signature could not be added to the keychain", "Exiting..."));
  EXPECT_THAT(toldJamf(), ElementsAre("Error: Vorlu signature could not be added to the keychain"));

  deleteKeychainItems(newRun());
  EXPECT_THAT(logged(), ElementsAre(noAccess.front()));
}

TEST_F(KeyMaterialFlow, DamagedProgramEndsTheRunAndSaysSo) {
  const std::string undecoded = "Error: Vorlu terminated because data could not be decoded. Please contact ";
  const seal::SealedTexts whole = sealed;
  const auto expectEnd = [&](const Lines& lines, const std::string& jamf, auto damage) {
    sealed = whole;
    damage(sealed);
    Vorlu& vorlu = newRun();
    EXPECT_EQ(endOf([&] { fetchServerData(vorlu); }), 1) << jamf;
    EXPECT_THAT(logged(), linesThatBegin(lines)) << jamf;
    EXPECT_THAT(toldJamf(), ElementsAre(jamf));
  };
  const auto text = [](seal::SealedTexts& texts, SiteText which) -> std::string& {
    return texts.texts[static_cast<std::size_t>(which)];
  };
  expectEnd({"Error: Failed to decode Base64 string (?)", "Error: Could not decode base 64 string - ", "Exiting..."},
            undecoded + "support@example.com", [&](auto& texts) { text(texts, SiteText::serverDataURL) = "?"; });
  expectEnd({"Error: Could not decrypt key - ", "Exiting..."}, undecoded + "support@example.com",
            [&](auto& texts) { text(texts, SiteText::serverDataURL) = "QUJD"; });
  expectEnd({"Error: Could not decrypt key - ", "Exiting..."}, undecoded, [](auto& texts) { texts.privateKey = "?"; });
  for (const auto& [secret, cause] :
       {std::pair("?", "invalidBase64String"), {"QUJD", "the halves of the signing secret differ in length"}}) {
    const std::string unread = std::string("Error processing security data - ") + cause;
    expectEnd({unread, unread, noComponents, "Exiting..."}, noComponents,
              [value = secret](auto& texts) { texts.signingSecret[1] = value; });
  }
}

}  // namespace
}  // namespace vorlu::test
