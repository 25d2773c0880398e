#include "refserver/signed_url.h"

#include <gtest/gtest.h>

namespace vorlu::refserver {
namespace {

constexpr double now = 1700000000.9;

TEST(SignedURL, SignatureIsTheURLSafeDigest) {
  // printf '%s' 'secret/path1700000020' | openssl dgst -sha256 -binary | base64 | tr '+/' '-_' | tr -d =
  EXPECT_EQ(signatureOf("secret", "/path", 1700000020), "svWa5XvyBkVmaH4q38ypnET4ivm4bxoKqRaw45N1w3o");
}

TEST(SignedURL, Verdicts) {
  const QueryPrefixes prefixes{"?signature=", "&expires="};
  const auto query = [](std::int64_t expiry) {
    return "signature=" + signatureOf("secret", "/path", expiry) + "&expires=" + std::to_string(expiry);
  };
  struct Case {
    std::string query;
    SignatureVerdict verdict;
  };
  const Case cases[] = {
      {query(1700000020), SignatureVerdict::valid},
      {query(1700000000), SignatureVerdict::valid},
      {query(1699999999), SignatureVerdict::expired},
      {query(1700000025), SignatureVerdict::valid},
      {query(1700000026), SignatureVerdict::tooFarAhead},
      {query(INT64_MAX), SignatureVerdict::tooFarAhead},
      {query(-1), SignatureVerdict::expired},
      {query(1700000020) + "1", SignatureVerdict::forged},
      {"signature=" + signatureOf("other", "/path", 1700000020) + "&expires=1700000020", SignatureVerdict::forged},
      {"signature=" + signatureOf("secret", "/other", 1700000020) + "&expires=1700000020", SignatureVerdict::forged},
      {"signature=&expires=1700000020", SignatureVerdict::forged},
      {query(1700000020) + "x", SignatureVerdict::malformed},
      {query(1700000020) + "&expires=1700000020", SignatureVerdict::malformed},
      {"signature=abc", SignatureVerdict::malformed},
      {"signature=abc&expires=", SignatureVerdict::malformed},
      {"signature=abc&expires=99999999999999999999", SignatureVerdict::malformed},
      {"expires=1700000020&signature=abc", SignatureVerdict::malformed},
      {"", SignatureVerdict::malformed},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(checkSignedQuery(one.query, prefixes, "secret", "/path", now), one.verdict) << one.query;
  }
}

}  // namespace
}  // namespace vorlu::refserver
