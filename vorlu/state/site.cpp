#include "vorlu/state/site.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "vorlu/state/encoding.h"
#include "vorlu/state/replacement.h"

namespace vorlu {

namespace {

/// Base64 whose slashes may still be escaped as JSON does.
std::optional<std::string> decodeStored(std::string_view text) {
  return base64Decode(replacedAll(text, "\\/", "/"));
}

constexpr const char* invalidBase64 = "invalidBase64String";

}  // namespace

std::string stripDecoys(const SealedSite& site, std::string_view text) {
  std::string stripped(text);
  for (const std::string_view decoy : site.decoys) {
    if (!decoy.empty()) stripped = replacedAll(stripped, decoy, "");
  }
  return stripped;
}

Result<std::string> Site::open(SiteText text) const {
  if (const auto known = opened_.find(text); known != opened_.end()) return known->second;
  const std::string_view sealedText = sealed_.texts[static_cast<std::size_t>(text)];
  const auto cipher = decodeStored(sealedText);
  if (!cipher) return Failure{fmt::format("Error: Could not decode base 64 string - {}", invalidBase64)};
  const auto plain = security_.rsaDecrypt(*cipher, privateKey());
  if (!plain) {
    return Failure{fmt::format("Error: Could not decrypt key - {}", plain.error()), plain.failure().code};
  }
  return opened_.emplace(text, *plain).first->second;
}

const std::string& Site::supportContact() const {
  static const std::string unknown;
  if (!open(SiteText::supportContact)) return unknown;
  return opened_.at(SiteText::supportContact);
}

const std::string& Site::privateKey() const {
  if (privateKey_.empty()) privateKey_ = decodeStored(stripDecoys(sealed_, sealed_.privateKey)).value_or("");
  return privateKey_;
}

Result<std::string> Site::signingSecret() const {
  const auto noise = decodeStored(sealed_.signingSecret[0]);
  const auto other = decodeStored(sealed_.signingSecret[1]);
  if (!noise || !other) return Failure{invalidBase64};
  if (noise->size() != other->size()) return Failure{"the halves of the signing secret differ in length"};
  std::string secret = *noise;
  std::transform(secret.begin(), secret.end(), other->begin(), secret.begin(),
                 [](char a, char b) { return static_cast<char>(a ^ b); });
  return secret;
}

}  // namespace vorlu
