#include <openssl/evp.h>

#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/download_cache.h"
#include "vorlu/detection/placeholders.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/error_record.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/site.h"

namespace vorlu::fuzz {
namespace {

void checkEncodings(const std::string& bytes) {
  const std::string base64 = base64Encode(bytes);
  const std::string hex = hexEncode(bytes);
  expect(base64Decode(base64) == bytes, "Base64 comes back", bytes);
  expect(hexDecode(hex) == bytes, "hexadecimal comes back", bytes);
  std::string known(bytes.size() / 3 * 4 + 5, '\0');
  const int length =
      EVP_EncodeBlock(reinterpret_cast<unsigned char*>(known.data()),
                      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  known.resize(static_cast<std::size_t>(length));
  expectSame(base64, known, "Base64 is everybody's");
  if (const auto decoded = base64Decode(bytes)) {
    expect(base64Decode(base64Encode(*decoded)) == decoded, "a decoded text encodes", bytes);
    expect(decoded->size() == bytes.size() / 4 * 3 - (bytes.ends_with("==")  ? 2U
                                                      : bytes.ends_with('=') ? 1U
                                                                             : 0U),
           "four characters are three bytes", bytes);
  }
  if (const auto decoded = hexDecode(bytes)) expect(decoded->size() * 2 == bytes.size(), "two digits a byte", bytes);
}

/// Decoys at places that the input chooses, never within one another.
void checkDecoys(const std::string& text, Input places) {
  std::string spliced;
  for (const char c : text) {
    const unsigned place = places.byte();
    if (place % 4 == 0) spliced += sealedSite.decoys[place / 4 % sealedSite.decoys.size()];
    spliced += c;
  }
  expectSame(stripDecoys(sealedSite, spliced), text, "decoys go and nothing else");
}

void checkLog(const std::string& text) {
  FuzzedMac& mac = FuzzedMac::shared();
  Vorlu& vorlu = mac.fresh();
  vorlu.log(text);
  vorlu.log.logForJamf(text);
  const auto lines = mac.systemLog.lines();
  expect(lines.size() == 1, "one message, one line", text);
  for (const char c : lines.front())
    expect(static_cast<unsigned char>(c) >= ' ' && c != 0x7f, "no control character", lines.front());
  const std::string file = mac.read(paths::log);
  expect(file.find('\n') == file.size() - 1, "one line in the file", file);
  const bool filed = isFiledError(text) || isFiledWarning(text);
  const std::string errors = mac.read(paths::errors);
  expect(filed == !errors.empty(), "what is filed is filed", text);
  if (filed) expect(decodeJson<ErrorStruct>(errors).ok(), "the file of errors can be read", errors);
}

void checkPlaceholders(const std::string& text) {
  const std::string filled = expandPlaceholders(text, {"2.0", "alice"});
  expect(filled.find("%latestVersion%") == std::string::npos || text.find("%%") != std::string::npos ||
             text.find("%latest") != std::string::npos,
         "placeholders are filled", text, filled);
  if (text.find('%') == std::string::npos) expectSame(filled, text, "a text without placeholders stays");
  const std::string stem = cacheFileStem(text, text);
  expect(stem.find('/') == std::string::npos && stem.find('\0') == std::string::npos, "a name in the cache", stem);
}

}  // namespace

/// Texts from anywhere: encodings, decoys, log lines, placeholders, names.
FUZZ_TARGET(texts) {
  const std::string text(input);
  checkEncodings(text);
  checkDecoys(text, Input(input));
  checkLog(text);
  checkPlaceholders(text);
}

}  // namespace vorlu::fuzz
