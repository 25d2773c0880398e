#include "ctl/lint/web_address.h"

#include <fmt/format.h>

#include "vorlu/detection/letter_case.h"
#include "vorlu/detection/web_scraper.h"
#include "vorlu/state/replacement.h"

namespace vorlu::ctl {

void checkWebAddress(RecordLint& lint, std::string_view key, std::string_view url, BlanksInURL blanks) {
  if (url.empty()) return;
  const std::string asked =
      blanks == BlanksInURL::allowed ? replacedAll(std::string(url), " ", "%20") : std::string(url);
  if (!isWebURL(asked))
    return lint.error(key, fmt::format("\"{}\" isn't a URL that can be asked", url),
                      "write https://, the server and the path, with special characters percent-encoded");
  if (isInAnyCase(url.substr(0, 7), "http://"))
    lint.warning(key, "is asked over http, where anyone on the way can read and change the answer", "use https");
}

}  // namespace vorlu::ctl
