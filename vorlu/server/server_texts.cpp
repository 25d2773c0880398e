#include "vorlu/server/server_texts.h"

#include <fmt/format.h>

#include "vorlu/server/encryption_utility.h"
#include "vorlu/state/end_run.h"
#include "vorlu/vorlu.h"

namespace vorlu {

std::string decryptString(Vorlu& vorlu, SiteText text) {
  Result<std::string> opened = vorlu.site.open(text);
  if (opened) return std::move(*opened);
  // Decoded once more for the line that shows a damaged text as it is stored.
  EncryptionUtility crypto(vorlu.platform.security, vorlu.log);
  static_cast<void>(crypto.base64Decode(vorlu.site.sealed().texts[static_cast<std::size_t>(text)]));
  vorlu.log(opened.error());
  vorlu.log.logForJamf(fmt::format("Error: Vorlu terminated because data could not be decoded. Please contact {}",
                                   vorlu.site.supportContact()));
  vorlu.log("Exiting...");
  exitProcess(1);
}

std::pair<std::string, std::string> authorizationHeader(Vorlu& vorlu, const std::string& token) {
  return {"Authorization", decryptString(vorlu, SiteText::authorizationPrefix) + token};
}

}  // namespace vorlu
