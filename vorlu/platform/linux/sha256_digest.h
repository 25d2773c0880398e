#pragma once

#include <memory>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

namespace vorlu {

/// SHA-256 of bytes that arrive in pieces.
class Sha256Digest {
 public:
  Sha256Digest();
  ~Sha256Digest();

  void update(std::string_view bytes);
  /// The 32 raw bytes; afterwards the digest starts anew.
  std::string finish();
  /// The same as 64 lower-case hexadecimal digits.
  std::string finishHex();
  void restart();

 private:
  struct Free {
    void operator()(evp_md_ctx_st* context) const;
  };
  std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace vorlu
