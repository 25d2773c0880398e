#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>

#include "vorlu/platform/security.h"

namespace vorlu {

/// The texts that the agent holds of its server and maker. Each is sealed at build time: 344 characters of Base64, 256
/// bytes of RSA-2048 ciphertext.
enum class SiteText {
  connectivityURL,
  timestampURL,
  serverDataURL,
  serverDataPath,
  signatureQueryPrefix,
  expiryQueryPrefix,
  requestMethod,
  authorizationPrefix,
  reportMethod,
  reportToken,
  reportHeaderName,
  reportHeaderValue,
  customerName,
  supportContact,
  makerLine,
  oldName,
  oldDir,
  toolName,
};
inline constexpr std::size_t siteTextCount = 18;

/// What the build seals into the program. Views of static storage.
struct SealedSite {
  std::array<std::string_view, siteTextCount> texts;  ///< by SiteText; an empty text of the site file is sealed too
  std::string_view privateKey;                        ///< Base64 of the key's DER, with decoys inside
  std::array<std::string_view, 10> decoys;            ///< 216 characters each, of the form of a public RSA key
  /// Two Base64 texts of equal length; their bytes joined by exclusive or are the signing secret.
  std::array<std::string_view, 2> signingSecret;
};

/// The site of this build (generated source).
extern const SealedSite sealedSite;

/// `text` with every occurrence of each decoy removed.
std::string stripDecoys(const SealedSite& site, std::string_view text);

/// Opens sealed texts when they are first used and keeps them.
class Site {
 public:
  Site(const SealedSite& sealed, Security& security) : sealed_(sealed), security_(security) {}

  const SealedSite& sealed() const { return sealed_; }
  /// The opened text. A failure's text is the log line that tells it.
  Result<std::string> open(SiteText text) const;
  /// The address that stands in messages; empty when it can't be opened.
  const std::string& supportContact() const;
  /// The agent's private key as DER; empty when the stored text is damaged.
  const std::string& privateKey() const;
  /// The secret behind signed requests. A failure's text is the cause alone.
  Result<std::string> signingSecret() const;

 private:
  const SealedSite& sealed_;
  Security& security_;
  mutable std::map<SiteText, std::string> opened_;
  mutable std::string privateKey_;
};

}  // namespace vorlu
