#pragma once

#include <string>

#include "seal/sealed_texts.h"

namespace vorlu::seal {

/// First line of the generated source: a digest of what it was made from. Sealing is random, so that this line, not the
/// text, tells whether a source is still good.
std::string sourceStamp(const SiteFile& site, const AgentKeys& keys);

/// The C++ source that defines `vorlu::sealedSite`, its stamp first.
std::string generatedSource(const std::string& stamp, const SealedTexts& sealed);

}  // namespace vorlu::seal
