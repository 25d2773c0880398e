#include "refserver/signed_url.h"

#include <gtest/gtest.h>

namespace vorlu::refserver {
namespace {

TEST(SignedURL, OnlyFreshUrlsOfItsOwnSecretPass) {
  using enum SignatureVerdict;
  const auto query = [](std::int64_t expiry, const char* secret = "secret", const char* path = "/path") {
    return "signature=" + signatureOf(secret, path, expiry) + "&expires=" + std::to_string(expiry);
  };
  const std::pair<std::string, SignatureVerdict> cases[] = {
      {query(1700000000), valid},
      {query(1699999999), expired},
      {query(1700000025), valid},
      {query(1700000026), tooFarAhead},
      {query(INT64_MAX), tooFarAhead},
      {query(1700000020) + "1", forged},
      {query(1700000020, "other"), forged},
      {query(1700000020, "secret", "/other"), forged},
      {"signature=&expires=1700000020", forged},
      {query(1700000020) + "x", malformed},
      {query(1700000020) + "&expires=1700000020", malformed},
      {"signature=abc&expires=99999999999999999999", malformed},
      {"", malformed},
  };
  for (const auto& [text, verdict] : cases)
    EXPECT_EQ(checkSignedQuery(text, {"?signature=", "&expires="}, "secret", "/path", 1700000000.9), verdict) << text;
}

}  // namespace
}  // namespace vorlu::refserver
