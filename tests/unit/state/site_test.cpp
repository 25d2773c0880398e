#include "vorlu/state/site.h"

#include <gtest/gtest.h>

#include "seal/keys.h"
#include "seal/sealed_texts.h"
#include "seal/small_file.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/state/encoding.h"

namespace vorlu {
namespace {

std::size_t occurrences(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (auto at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

struct SiteTest : testing::Test {
  LinuxSecurity security;
  Site site{sealedSite, security};
  Result<seal::AgentKeys> keys = seal::openOrMakeKeys(VORLU_SITE_KEYS);
};

TEST_F(SiteTest, OpensEveryTextOfItsFile) {
  const auto file = seal::readSiteFile(VORLU_SITE_FILE);
  ASSERT_TRUE(file) << file.error();
  for (std::size_t i = 0; i < siteTextCount; ++i) {
    EXPECT_EQ(sealedSite.texts[i].size(), 344U) << seal::siteKeys[i];
    const auto opened = site.open(static_cast<SiteText>(i));
    ASSERT_TRUE(opened) << seal::siteKeys[i] << ": " << opened.error();
    EXPECT_EQ(*opened, file->texts[i]) << seal::siteKeys[i];
  }
  EXPECT_EQ(site.supportContact(), (*file)[SiteText::supportContact]);
}

TEST_F(SiteTest, HidesThePrivateKeyBehindItsDecoys) {
  ASSERT_TRUE(keys) << keys.error();
  for (const std::string_view decoy : sealedSite.decoys) {
    EXPECT_EQ(decoy.size(), 216U);
    EXPECT_EQ(occurrences(sealedSite.privateKey, decoy), 1U);
  }
  EXPECT_FALSE(base64Decode(sealedSite.privateKey) == keys->agent.privateDer());
  EXPECT_EQ(site.privateKey(), keys->agent.privateDer());
}

TEST_F(SiteTest, JoinsTheSigningSecret) {
  ASSERT_TRUE(keys) << keys.error();
  const auto secret = site.signingSecret();
  ASSERT_TRUE(secret) << secret.error();
  EXPECT_EQ(*secret, keys->signingSecret);
  for (const std::string_view half : sealedSite.signingSecret) EXPECT_NE(base64Decode(half), keys->signingSecret);
}

TEST_F(SiteTest, StripsEveryOccurrenceOfEveryDecoy) {
  const std::string first(sealedSite.decoys[0]);
  const std::string last(sealedSite.decoys[9]);
  EXPECT_EQ(stripDecoys(sealedSite, "to" + first + "k" + last + "en" + first + first), "token");
  EXPECT_EQ(stripDecoys(sealedSite, last), "");
  EXPECT_EQ(stripDecoys(sealedSite, first.substr(1)), first.substr(1));
}

TEST_F(SiteTest, OpensTextsWithEscapedSlashes) {
  std::string escaped;
  for (const char character : sealedSite.texts[0]) escaped += character == '/' ? "\\/" : std::string(1, character);
  SealedSite sealed = sealedSite;
  sealed.texts[0] = escaped;
  const Site other(sealed, security);
  const auto opened = other.open(SiteText::connectivityURL);
  ASSERT_TRUE(opened) << opened.error();
  EXPECT_EQ(*opened, *site.open(SiteText::connectivityURL));
}

TEST_F(SiteTest, TellsDamageApart) {
  SealedSite sealed = sealedSite;
  sealed.texts[0] = "no Base64";
  sealed.texts[1] = "AAAA";
  sealed.texts[static_cast<std::size_t>(SiteText::supportContact)] = "";
  sealed.signingSecret[1] = "AAAA";
  const Site damaged(sealed, security);

  const auto undecoded = damaged.open(SiteText::connectivityURL);
  ASSERT_FALSE(undecoded);
  EXPECT_EQ(undecoded.error(), "Error: Could not decode base 64 string - invalidBase64String");
  const auto undecrypted = damaged.open(SiteText::timestampURL);
  ASSERT_FALSE(undecrypted);
  EXPECT_TRUE(undecrypted.error().starts_with("Error: Could not decrypt key - ")) << undecrypted.error();
  EXPECT_EQ(damaged.supportContact(), "");
  EXPECT_FALSE(damaged.signingSecret());

  sealed.privateKey = "damaged";
  EXPECT_EQ(Site(sealed, security).privateKey(), "");
}

}  // namespace
}  // namespace vorlu
