#include "vorlu/server/encryption_utility.h"

#include "tests/unit/server/server_fixture.h"
#include "vorlu/server/server_texts.h"

namespace vorlu::test {
namespace {

using Encryption = ServerFixture;
using ::testing::ElementsAre;

TEST_F(Encryption, ToleratesEscapedSlashesAlone) {
  EncryptionUtility utility(mac.security, newRun().log);
  EXPECT_EQ(*utility.base64Decode(R"(\/\/\/\/)"), "\xff\xff\xff");
  EXPECT_EQ(utility.base64Decode(R"(QUJD\)").error(), "invalidBase64String");
  EXPECT_THAT(logged(), ElementsAre(R"(Error: Failed to decode Base64 string (QUJD\))"));
}

TEST_F(Encryption, DamagedSiteTextEndsTheRun) {
  const std::pair<const char*, Lines> cases[] = {
      {"no Base64",
       {"Error: Failed to decode Base64 string (no Base64)",
        "Error: Could not decode base 64 string - invalidBase64String", "Exiting..."}},
      {"QUJD", {"Error: Could not decrypt key - Decryption failed", "Exiting..."}},
  };
  for (const auto& [text, lines] : cases) {
    sealed.texts[static_cast<std::size_t>(SiteText::requestMethod)] = text;
    Vorlu& vorlu = newRun();
    EXPECT_EQ(endOf([&] { decryptString(vorlu, SiteText::requestMethod); }), 1);
    EXPECT_THAT(logged(), linesThatBegin(lines)) << text;
    EXPECT_THAT(
        toldJamf(),
        ElementsAre("Error: Vorlu terminated because data could not be decoded. Please contact support@example.com"));
    EXPECT_EQ(decryptString(vorlu, SiteText::authorizationPrefix), "Bearer ");
  }
}

}  // namespace
}  // namespace vorlu::test
