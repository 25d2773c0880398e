#include "seal/sealed_texts.h"

#include <fmt/format.h>

#include "seal/random.h"
#include "vorlu/state/encoding.h"

namespace vorlu::seal {

namespace {

/// Two Base64 texts, each of them noise; the bytes' exclusive or is the secret.
std::array<std::string, 2> splitSecret(const std::string& secret) {
  const std::string noise = randomBytes(secret.size());
  std::string other = secret;
  for (std::size_t i = 0; i < other.size(); ++i) other[i] = static_cast<char>(other[i] ^ noise[i]);
  return {base64Encode(noise), base64Encode(other)};
}

std::string hiddenPrivateKey(const AgentKeys& keys) {
  return spliceDecoys(base64Encode(keys.agent.privateDer()), {keys.decoys.begin(), keys.decoys.end()});
}

}  // namespace

SealedSite SealedTexts::view() const {
  SealedSite site;
  for (std::size_t i = 0; i < siteTextCount; ++i) site.texts[i] = texts[i];
  site.privateKey = privateKey;
  for (std::size_t i = 0; i < decoyCount; ++i) site.decoys[i] = decoys[i];
  site.signingSecret = {signingSecret[0], signingSecret[1]};
  return site;
}

Result<SealedTexts> sealSite(const SiteFile& site, const AgentKeys& keys) {
  SealedTexts sealed;
  for (std::size_t i = 0; i < siteTextCount; ++i) {
    const std::string& text = site.texts[i];
    if (text.size() > keys.agent.capacity()) {
      return Failure{fmt::format("the value of \"{}\" is {} bytes long; at most {} can be sealed", siteKeys[i],
                                 text.size(), keys.agent.capacity())};
    }
    sealed.texts[i] = base64Encode(keys.agent.encrypt(text));
  }
  sealed.privateKey = hiddenPrivateKey(keys);
  sealed.decoys = keys.decoys;
  sealed.signingSecret = splitSecret(keys.signingSecret);
  return sealed;
}

}  // namespace vorlu::seal
