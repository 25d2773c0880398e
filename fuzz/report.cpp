#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "seal/rsa_key.h"
#include "vorlu/reporting/encrypt_report.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/json.h"

namespace vorlu::fuzz {
namespace {

/// What the owner of the report's key reads; empty when it can't be opened.
std::string opened(const EncryptedJson& report, const seal::RsaKey& owner) {
  LinuxSecurity& security = FuzzedMac::shared().security;
  const auto key = owner.decrypt(hexDecode(report.aes_key_encrypted_hex).value_or(""));
  const auto plain = key ? security.aesDecrypt(hexDecode(report.encrypted_data_hex).value_or(""), *key,
                                               hexDecode(report.iv_hex).value_or(""))
                         : Result<std::string>(key.failure());
  expect(plain.ok(), "the owner opens the report", plain ? "" : plain.error());
  return *plain;
}

}  // namespace

/// A report and the key that it is enciphered for, parted by a zero byte; without one the input is a report for a good
/// key.
FUZZ_TARGET(report) {
  static const seal::RsaKey owner = seal::RsaKey::generate(1024 + 512);  // large enough to wrap a key, quick to open
  static const std::string ownerText = base64Encode(owner.publicDer());
  FuzzedMac& mac = FuzzedMac::shared();
  static Vorlu& vorlu = mac.fresh();
  mac.systemLog.take();
  const std::size_t end = input.find('\0');
  const std::string text(input.substr(0, end));
  const std::string key = end == std::string_view::npos ? ownerText : std::string(input.substr(end + 1));
  const auto report = encryptReport(mac.security, vorlu.log, text, key);
  if (!report) return expect(report.error().starts_with("Error: ") && key != ownerText, "a good key enciphers", text);
  const auto sent = decodeJson<EncryptedJson>(encodeJson(*report, JsonLayout::compact));
  expect(sent.ok(), "what is sent can be read");
  if (key == ownerText) expectSame(opened(*sent, owner), text, "the owner reads what was reported");
}

}  // namespace vorlu::fuzz
