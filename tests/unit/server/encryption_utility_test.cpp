#include "vorlu/server/encryption_utility.h"

#include "tests/unit/server/server_fixture.h"
#include "vorlu/server/server_texts.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;

class Encryption : public ServerFixture {
 protected:
  EncryptionUtility crypto() { return {mac.security, newRun().log}; }
};

TEST_F(Encryption, ReadsTextsOfKeys) {
  EncryptionUtility utility = crypto();
  EXPECT_EQ(*utility.base64Decode(R"(\/\/\/\/)"), "\xff\xff\xff");
  EXPECT_EQ(utility.base64Decode(R"(QUJD\)").error(), "invalidBase64String");
  EXPECT_EQ(utility.base64Decode("Zm9v YmFy").error(), "invalidBase64String");
  EXPECT_THAT(logged(), ElementsAre(R"(Error: Failed to decode Base64 string (QUJD\))",
                                    "Error: Failed to decode Base64 string (Zm9v YmFy)"));
  EXPECT_EQ(*EncryptionUtility::hexDecode("00fFaB"), std::string("\0\xff\xab", 3));
  for (const char* text : {"0", "0g", " 00", "0x00"}) {
    EXPECT_EQ(EncryptionUtility::hexDecode(text).error(), "invalidHexString") << text;
  }
}

TEST_F(Encryption, NamesTheDomainOfItsErrors) {
  EncryptionUtility utility = crypto();
  const std::string key(32, 'k');
  const std::string iv(16, 'i');
  EXPECT_EQ(*utility.aesDecrypt(*utility.aesEncrypt("text", key, iv), key, iv), "text");
  EXPECT_THAT(logged(), ElementsAre());

  EXPECT_THAT(utility.aesEncrypt("text", std::string(31, 'k'), iv).error(), ::testing::HasSubstr("CryptoError"));
  EXPECT_THAT(utility.aesDecrypt(std::string(16, 'x'), std::string(16, 'k'), iv).error(),
              ::testing::HasSubstr("CryptoError"));
  EXPECT_THAT(logged(), ElementsAre("Error in AES operation: -4300", "Error in AES operation: -4300"));
  EXPECT_THAT(utility.rsaEncrypt("text", "no key").error(),
              ::testing::AllOf(::testing::HasSubstr("EncryptionError"), ::testing::HasSubstr("Encryption failed")));
  EXPECT_THAT(utility.rsaDecrypt("no cipher", agentKeys().agent.privateDer()).error(),
              ::testing::AllOf(::testing::HasSubstr("DecryptionError"), ::testing::HasSubstr("Decryption failed")));
}

TEST_F(Encryption, DamagedSiteTextEndsTheRun) {
  const auto method = static_cast<std::size_t>(SiteText::requestMethod);
  const struct {
    std::string text;
    std::vector<std::string> lines;
  } cases[] = {
      {"no Base64",
       {"Error: Failed to decode Base64 string (no Base64)",
        "Error: Could not decode base 64 string - invalidBase64String", "Exiting..."}},
      {"QUJD", {"Error: Could not decrypt key - Decryption failed", "Exiting..."}},
  };
  for (const auto& c : cases) {
    sealed.texts[method] = c.text;
    Vorlu& vorlu = newRun();
    EXPECT_EQ(endOf([&] { decryptString(vorlu, SiteText::requestMethod); }), 1);
    EXPECT_THAT(logged(), linesThatBegin(c.lines)) << c.text;
    EXPECT_THAT(toldJamf(), ElementsAre("Error: Vorlu terminated because data could not be decoded. Please contact "
                                        "support@example.com"));
    EXPECT_EQ(decryptString(vorlu, SiteText::authorizationPrefix), "Bearer ");
  }
}

}  // namespace
}  // namespace vorlu::test
