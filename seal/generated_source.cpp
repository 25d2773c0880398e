#include "seal/generated_source.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "seal/sha256.h"
#include "vorlu/state/encoding.h"

namespace vorlu::seal {

namespace {

/// Goes up when the form of the generated source changes.
constexpr int sourceForm = 1;

/// One part of the digested text; the length keeps neighbours apart.
std::string part(std::string_view text) {
  return fmt::format("{}:{}\n", text.size(), text);
}

template <class Texts>
std::string listed(const Texts& texts) {
  std::string lines;
  for (const std::string& text : texts) lines += fmt::format("        \"{}\",\n", text);
  return lines;
}

}  // namespace

std::string sourceStamp(const SiteFile& site, const AgentKeys& keys) {
  std::string inputs = fmt::format("{}\n", sourceForm);
  for (const std::string& text : site.texts) inputs += part(text);
  inputs += part(keys.agent.privateDer());
  inputs += part(keys.signingSecret);
  for (const std::string& decoy : keys.decoys) inputs += part(decoy);
  return fmt::format("// Made by vorlu-seal from {}\n", hexEncode(sha256(inputs)));
}

std::string generatedSource(const std::string& stamp, const SealedTexts& sealed) {
  return stamp + fmt::format(R"(#include "vorlu/state/site.h"

namespace vorlu {{

constinit const SealedSite sealedSite = {{
    .texts = {{
{}    }},
    .privateKey = "{}",
    .decoys = {{
{}    }},
    .signingSecret = {{
{}    }},
}};

}}  // namespace vorlu
)",
                             listed(sealed.texts), sealed.privateKey, listed(sealed.decoys),
                             listed(sealed.signingSecret));
}

}  // namespace vorlu::seal
