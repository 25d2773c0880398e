#include "vorlu/platform/linux/linux_security.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/scripted_processes.h"
#include "tests/support/temporary_folder.h"
#include "vorlu/platform/linux/linux_processes.h"

namespace vorlu::test {
namespace {

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return text;
}

class SecurityTest : public testing::Test {
 protected:
  /// Runs the openssl program in the test's folder; its output goes to the file behind "> ".
  void openssl(const std::string& line) {
    const Command command = commandOf("/bin/sh", {"-c", "cd " + folder_.path() + " && openssl " + line});
    const auto result = LinuxProcesses().run(command);
    ASSERT_EQ(result.status, 0) << line << "\n" << result.output;
  }
  std::string file(const std::string& name) { return readFile(folder_ / ("/" + name)); }
  void makeKeys() {
    openssl("genrsa -out key.pem 2048");
    openssl("rsa -in key.pem -traditional -outform DER -out private1.der");
    openssl("pkcs8 -topk8 -nocrypt -in key.pem -outform DER -out private8.der");
    openssl("rsa -in key.pem -pubout -outform DER -out public.der");
    openssl("rsa -in key.pem -RSAPublicKey_out -outform DER -out public1.der");
  }

  TemporaryFolder folder_;
  LinuxSecurity security_;
};

TEST_F(SecurityTest, RsaAgreesWithTheOpensslProgram) {
  makeKeys();
  const std::string options = " -pkeyopt rsa_padding_mode:oaep -pkeyopt rsa_oaep_md:sha512 -pkeyopt rsa_mgf1_md:sha512";
  const std::string plain(126, 'p');  // the most that fits
  writeFile(folder_ / "/plain", plain);
  openssl("pkeyutl -encrypt -inkey key.pem -in plain -out sealed" + options);
  for (const char* key : {"private1.der", "private8.der"}) {
    const auto opened = security_.rsaDecrypt(file("sealed"), file(key));
    ASSERT_TRUE(opened) << key << opened.error();
    EXPECT_EQ(*opened, plain);
  }
  for (const char* key : {"public.der", "public1.der"}) {
    const auto sealed = security_.rsaEncrypt(plain, file(key));
    ASSERT_TRUE(sealed) << key << sealed.error();
    writeFile(folder_ / "/ours", *sealed);
    openssl("pkeyutl -decrypt -inkey key.pem -in ours -out opened" + options);
    EXPECT_EQ(file("opened"), plain);
  }
}

TEST_F(SecurityTest, RsaRefusesWhatItCannotOpen) {
  makeKeys();
  const std::string key = file("private8.der");
  std::string sealed = *security_.rsaEncrypt("text", file("public.der"));
  ASSERT_EQ(security_.rsaDecrypt(sealed, key).value(), "text");
  sealed[100] = static_cast<char>(sealed[100] ^ 1);
  openssl("genpkey -algorithm ec -pkeyopt ec_paramgen_curve:P-256 -outform DER -out curve.der");
  struct Case {
    std::string cipher, key;
  };
  for (const Case& c : {Case{sealed, key},
                        {"", key},
                        {"short", key},
                        {sealed, ""},
                        {sealed, "no key"},
                        {sealed, file("curve.der")},
                        {sealed, key.substr(0, 600)}})
    EXPECT_FALSE(security_.rsaDecrypt(c.cipher, c.key));
  EXPECT_FALSE(security_.rsaEncrypt(std::string(127, 'x'), file("public.der")));
  EXPECT_FALSE(security_.rsaEncrypt("x", "no key"));
  // The kept key isn't used for another one's text.
  openssl("genrsa -out other.pem 2048");
  openssl("rsa -in other.pem -traditional -outform DER -out other.der");
  EXPECT_FALSE(security_.rsaDecrypt(*security_.rsaEncrypt("text", file("public.der")), file("other.der")));
}

TEST_F(SecurityTest, AesAgreesWithTheOpensslProgram) {
  const std::string key = "0123456789abcdef0123456789abcdef";
  const std::string iv = "fedcba9876543210";
  for (const std::size_t size : {0, 1, 15, 16, 17, 100'000}) {
    const std::string plain(size, 'a');
    writeFile(folder_ / "/plain", plain);
    openssl(fmt::format("enc -aes-256-cbc -K {} -iv {} -in plain -out sealed", hex(key), hex(iv)));
    EXPECT_EQ(security_.aesEncrypt(plain, key, iv).value(), file("sealed")) << size;
    EXPECT_EQ(security_.aesDecrypt(file("sealed"), key, iv).value(), plain) << size;
  }
}

TEST_F(SecurityTest, AesFailsWithTheCiphersStatus) {
  const std::string key(32, 'k');
  const std::string iv(16, 'i');
  std::string sealed = *security_.aesEncrypt("a text of more than one block", key, iv);
  sealed.back() = static_cast<char>(sealed.back() ^ 0x55);
  struct Case {
    std::string data, key, iv;
    int code;
  };
  for (const Case& c : {Case{sealed, key + "k", iv, -4300},
                        {sealed, key.substr(1), iv, -4300},
                        {sealed, key, iv + "i", -4300},
                        {sealed, key, "", -4300},
                        {sealed.substr(1), key, iv, -4303},
                        {sealed, std::string(32, 'x'), iv, -4304},
                        {"", key, iv, -4304}}) {
    const auto opened = security_.aesDecrypt(c.data, c.key, c.iv);
    ASSERT_FALSE(opened) << c.code;
    EXPECT_EQ(opened.failure().code, c.code);
  }
  EXPECT_EQ(security_.aesEncrypt("x", "short", iv).failure().code, -4300);
}

TEST_F(SecurityTest, DigestAndRandomBytes) {
  EXPECT_EQ(hex(security_.sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(security_.randomBytes(32)->size(), 32u);
  EXPECT_NE(*security_.randomBytes(32), *security_.randomBytes(32));
  EXPECT_EQ(security_.randomBytes(0).value(), "");
}

}  // namespace
}  // namespace vorlu::test
