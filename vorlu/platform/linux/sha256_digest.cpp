#include "vorlu/platform/linux/sha256_digest.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <stdexcept>

namespace vorlu {
namespace {

void require(bool done) {
  if (!done) throw std::runtime_error("The digest SHA-256 isn't available");
}

}  // namespace

void Sha256Digest::Free::operator()(evp_md_ctx_st* context) const {
  EVP_MD_CTX_free(context);
}

Sha256Digest::Sha256Digest() : context_(EVP_MD_CTX_new()) {
  restart();
}

Sha256Digest::~Sha256Digest() = default;

void Sha256Digest::restart() {
  require(context_ != nullptr && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1);
}

void Sha256Digest::update(std::string_view bytes) {
  require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1);
}

std::string Sha256Digest::finish() {
  std::string raw(32, '\0');
  require(EVP_DigestFinal_ex(context_.get(), reinterpret_cast<unsigned char*>(raw.data()), nullptr) == 1);
  restart();
  return raw;
}

std::string Sha256Digest::finishHex() {
  std::string hex;
  for (const char byte : finish()) hex += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return hex;
}

}  // namespace vorlu
