#include "vorlu/platform/linux/linux_security.h"

#include <gtest/gtest.h>

#include "seal/rsa_key.h"

namespace vorlu::test {
namespace {

TEST(LinuxSecurity, RsaOpensItsOwnTextsAlone) {
  LinuxSecurity security;
  const auto key = seal::RsaKey::generate(2048);
  const auto other = seal::RsaKey::generate(2048);
  const std::string plain(126, 'p');  // the most that fits
  std::string sealed = key.encrypt(plain);
  EXPECT_EQ(security.rsaDecrypt(sealed, key.privateDer()).value(), plain);
  EXPECT_FALSE(security.rsaDecrypt(sealed, other.privateDer())) << "the kept key isn't used for another one's text";
  EXPECT_FALSE(security.rsaDecrypt(sealed, "no key"));
  sealed[100] = static_cast<char>(sealed[100] ^ 1);
  EXPECT_FALSE(security.rsaDecrypt(sealed, key.privateDer()));
}

TEST(LinuxSecurity, AesTellsTheCiphersStatus) {
  LinuxSecurity security;
  const std::string key(32, 'k');
  const std::string iv(16, 'i');
  const std::string sealed = *security.aesEncrypt("a text of more than one block", key, iv);
  const auto codeOf = [&](const std::string& data, const std::string& withKey, const std::string& withIv) {
    const auto opened = security.aesDecrypt(data, withKey, withIv);
    return opened ? 0 : opened.failure().code;
  };
  EXPECT_EQ(codeOf(sealed, key, iv), 0);
  EXPECT_EQ(codeOf(sealed, key + "k", iv), -4300);
  EXPECT_EQ(codeOf(sealed, key, iv + "i"), -4300);
  EXPECT_EQ(codeOf(sealed.substr(1), key, iv), -4303);
  EXPECT_EQ(codeOf(sealed, std::string(32, 'x'), iv), -4304);
  EXPECT_EQ(codeOf("", key, iv), -4304);
}

}  // namespace
}  // namespace vorlu::test
