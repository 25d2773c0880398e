#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vorlu/platform/result.h"

struct evp_pkey_st;

namespace vorlu::seal {

/// An RSA key, whole or its public half. Operations without a Result throw std::runtime_error when OpenSSL fails.
class RsaKey {
 public:
  static RsaKey generate(unsigned bits);
  static Result<RsaKey> fromPrivatePem(const std::string& pem);
  static Result<RsaKey> fromPublicPem(const std::string& pem);

  std::string privatePem() const;
  std::string publicPem() const;
  /// PKCS#8.
  std::string privateDer() const;
  /// SubjectPublicKeyInfo.
  std::string publicDer() const;

  /// The longest plain text for `encrypt`, bytes: 126 with a 2048-bit key.
  std::size_t capacity() const;
  /// RSA-OAEP, SHA-512 for digest and mask.
  std::string encrypt(std::string_view plain) const;
  /// The opposite; fails on a text that this key can't open.
  Result<std::string> decrypt(std::string_view cipher) const;

 private:
  struct Free {
    void operator()(evp_pkey_st* key) const;
  };
  explicit RsaKey(evp_pkey_st* key) : key_(key) {}
  std::unique_ptr<evp_pkey_st, Free> key_;
};

}  // namespace vorlu::seal
