#include "seal/rsa_key.h"

#include <fmt/format.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <stdexcept>

namespace vorlu::seal {

namespace {

struct FreeBio {
  void operator()(BIO* bio) const { BIO_free(bio); }
};
using Bio = std::unique_ptr<BIO, FreeBio>;

struct FreeContext {
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_PKEY_CTX, FreeContext>;

std::string lastOpenSslError() {
  char text[256] = "unknown error";
  if (const unsigned long code = ERR_get_error()) ERR_error_string_n(code, text, sizeof text);
  ERR_clear_error();
  return text;
}

void require(bool success, const char* action) {
  if (!success) throw std::runtime_error(fmt::format("{}: {}", action, lastOpenSslError()));
}

Bio reader(const std::string& text) {
  return Bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

/// What `write` puts into a memory BIO.
template <class Write>
std::string written(const char* action, Write write) {
  Bio bio(BIO_new(BIO_s_mem()));
  require(bio && write(bio.get()) == 1, action);
  char* data = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &data);
  return {data, static_cast<std::size_t>(size)};
}

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

void useOaepSha512(EVP_PKEY_CTX* context) {
  require(EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) == 1 &&
              EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha512()) == 1 &&
              EVP_PKEY_CTX_set_rsa_mgf1_md(context, EVP_sha512()) == 1,
          "choosing RSA-OAEP with SHA-512");
}

}  // namespace

void RsaKey::Free::operator()(evp_pkey_st* key) const {
  EVP_PKEY_free(key);
}

RsaKey RsaKey::generate(unsigned bits) {
  EVP_PKEY* key = EVP_RSA_gen(bits);
  require(key != nullptr, "making an RSA key");
  return RsaKey(key);
}

Result<RsaKey> RsaKey::fromPrivatePem(const std::string& pem) {
  EVP_PKEY* key = PEM_read_bio_PrivateKey(reader(pem).get(), nullptr, nullptr, nullptr);
  if (!key) return Failure{fmt::format("no private key in PEM form: {}", lastOpenSslError())};
  RsaKey owned(key);
  if (EVP_PKEY_is_a(key, "RSA") != 1) return Failure{"the private key isn't an RSA key"};
  return owned;
}

Result<RsaKey> RsaKey::fromPublicPem(const std::string& pem) {
  EVP_PKEY* key = PEM_read_bio_PUBKEY(reader(pem).get(), nullptr, nullptr, nullptr);
  if (!key) return Failure{fmt::format("no public key in PEM form: {}", lastOpenSslError())};
  return RsaKey(key);
}

std::string RsaKey::privatePem() const {
  return written("writing a private key", [this](BIO* bio) {
    return PEM_write_bio_PKCS8PrivateKey(bio, key_.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
}

std::string RsaKey::publicPem() const {
  return written("writing a public key", [this](BIO* bio) { return PEM_write_bio_PUBKEY(bio, key_.get()); });
}

std::string RsaKey::privateDer() const {
  return written("writing a private key", [this](BIO* bio) {
    return i2d_PKCS8PrivateKey_bio(bio, key_.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
}

std::string RsaKey::publicDer() const {
  return written("writing a public key", [this](BIO* bio) { return i2d_PUBKEY_bio(bio, key_.get()); });
}

std::size_t RsaKey::capacity() const {
  constexpr std::size_t digestBytes = 64;
  const std::size_t overhead = 2 * digestBytes + 2;
  const auto modulus = static_cast<std::size_t>(EVP_PKEY_get_size(key_.get()));
  return modulus > overhead ? modulus - overhead : 0;
}

std::string RsaKey::encrypt(std::string_view plain) const {
  Context context(EVP_PKEY_CTX_new(key_.get(), nullptr));
  require(context && EVP_PKEY_encrypt_init(context.get()) == 1, "preparing RSA encryption");
  useOaepSha512(context.get());
  std::size_t size = static_cast<std::size_t>(EVP_PKEY_get_size(key_.get()));
  std::string cipher(size, '\0');
  require(EVP_PKEY_encrypt(context.get(), reinterpret_cast<unsigned char*>(cipher.data()), &size, bytesOf(plain),
                           plain.size()) == 1,
          "encrypting with RSA");
  cipher.resize(size);
  return cipher;
}

Result<std::string> RsaKey::decrypt(std::string_view cipher) const {
  Context context(EVP_PKEY_CTX_new(key_.get(), nullptr));
  require(context && EVP_PKEY_decrypt_init(context.get()) == 1, "preparing RSA decryption");
  useOaepSha512(context.get());
  std::size_t size = static_cast<std::size_t>(EVP_PKEY_get_size(key_.get()));
  std::string plain(size, '\0');
  if (EVP_PKEY_decrypt(context.get(), reinterpret_cast<unsigned char*>(plain.data()), &size, bytesOf(cipher),
                       cipher.size()) != 1) {
    return Failure{lastOpenSslError()};
  }
  plain.resize(size);
  return plain;
}

}  // namespace vorlu::seal
