#pragma once

#include <array>
#include <string>

#include "seal/keys.h"
#include "seal/site_file.h"
#include "vorlu/platform/result.h"
#include "vorlu/state/site.h"

namespace vorlu::seal {

/// A sealed site that owns its texts: what the build writes into the program, and what a test hands to Site.
struct SealedTexts {
  std::array<std::string, siteTextCount> texts;
  std::string privateKey;
  Decoys decoys;
  std::array<std::string, 2> signingSecret;

  /// Views of this object's texts.
  SealedSite view() const;
};

/// Seals every text to the agent's key. A text longer than the key can hold is a failure that names key and length.
Result<SealedTexts> sealSite(const SiteFile& site, const AgentKeys& keys);

}  // namespace vorlu::seal
