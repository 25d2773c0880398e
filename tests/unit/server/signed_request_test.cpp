#include "vorlu/server/signed_request.h"

#include "tests/unit/server/server_fixture.h"

namespace vorlu::test {
namespace {

using SignedRequest = ServerFixture;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::SizeIs;

TEST_F(SignedRequest, UrlCarriesHashAndExpiry) {
  Vorlu& vorlu = newRun();
  mac.clock.set(1700000000);
  // The digest's Base64 is xe97RxXQPgwYtVz9/4VjsRzSqlYy9Udu+7BZpH5a38M=
  EXPECT_EQ(makeSignedURL(vorlu, "https://s.example:8443", "secret-15", 20, "/secrets"),
            "https://s.example:8443/secrets?signature=xe97RxXQPgwYtVz9_4VjsRzSqlYy9Udu-7BZpH5a38M&expires=1700000020");
  mac.clock.set(1700000000.999);
  EXPECT_THAT(*makeSignedURL(vorlu, "", "secret-15", 20, "/secrets"), ::testing::EndsWith("&expires=1700000020"));
}

TEST_F(SignedRequest, SecretThatIsNoTextGivesNoUrl) {
  Vorlu& vorlu = newRun();
  for (const char* secret : {"", "\xc3\xbc", "\xe2\x82\xac", "\xf4\x8f\xbf\xbf"}) {
    EXPECT_TRUE(makeSignedURL(vorlu, "b", secret, 20, "/p")) << secret;
  }
  EXPECT_THAT(logged(), ElementsAre());
  for (const char* secret : {"\xff", "\x80", "\xc3", "\xc0\xaf", "\xe0\x80\xaf", "\xed\xa0\x80", "\xf5\x80\x80\x80"}) {
    EXPECT_FALSE(makeSignedURL(vorlu, "b", secret, 20, "/p")) << secret;
  }
  EXPECT_THAT(logged(), AllOf(SizeIs(7), Each("Error: Unable to encode strings for signed URL")));
}

TEST_F(SignedRequest, SplitsUrlIntoBaseAndPath) {
  const struct {
    const char* url;
    const char* base;
    const char* path;
  } good[] = {
      {"https://s.example/manifest/all", "https://s.example", "/manifest/all"},
      {"http://127.0.0.1:8642/manifest", "http://127.0.0.1:8642", "/manifest"},
      {"https://u:p@s.example/m?x=1#y", "https://s.example", "/m"},
      {"https://s.example?x=/y", "https://s.example", ""},
      {"https://[::1]:1/m", "https://[::1]:1", "/m"},
      {"https://s.example", "https://s.example", ""},
  };
  Vorlu& vorlu = newRun();
  for (const auto& c : good) {
    const auto parts = splitServerURL(vorlu, c.url);
    ASSERT_TRUE(parts) << c.url;
    EXPECT_EQ(parts->base, c.base) << c.url;
    EXPECT_EQ(parts->path, c.path) << c.url;
  }
  EXPECT_THAT(logged(), ElementsAre());
  const char* const bad[] = {"",       "s.example/m", "/m",           "https:///m",
                             "://s/m", "1s://s/m",    "https://s /m", "https://:80/m"};
  for (const char* url : bad) EXPECT_FALSE(splitServerURL(vorlu, url)) << url;
  EXPECT_THAT(logged(), AllOf(SizeIs(std::size(bad)), Each("Error: Failed to parse Vorlu server URL. If this issue "
                                                           "persists contact support@example.com")));
}

TEST_F(SignedRequest, ServerDataTellsWhatIsMissing) {
  const std::string failed = "Error: Vorlu server data decode failed - ";
  const struct {
    const char* body;
    std::vector<std::string> lines;  ///< their beginnings
    std::vector<std::string> texts;
  } cases[] = {
      {R"({"data": "d", "signature": "s", "sec": "c", "more": 1})", {}, {"d", "s", "c"}},
      {R"({"data": "d", "signature": null})", {}, {"d", "", ""}},
      {R"({"message": "forbidden"})", {}, {"", "", ""}},
      {R"(["data"])", {failed + "typeMismatch(Dictionary<String, Any>, Context(codingPath: []"}, {"", "", ""}},
      {R"({"data": 5})", {failed + R"(typeMismatch(String, Context(codingPath: ["data"])"}, {"", "", ""}},
      {"<html>", {failed + "dataCorrupted("}, {"", "", ""}},
      {"", {failed + "dataCorrupted("}, {"", "", ""}},
  };
  for (const auto& c : cases) {
    Vorlu& vorlu = newRun();
    vorlu.keys.serverSec = "of an earlier answer";
    answer("/secrets", 200, c.body);
    fetchServerData(vorlu);
    EXPECT_THAT((std::vector{vorlu.keys.serverData, vorlu.keys.serverSignature, vorlu.keys.serverSec}), c.texts)
        << c.body;
    EXPECT_THAT(logged(), linesThatBegin(c.lines)) << c.body;
  }
}

TEST_F(SignedRequest, ServerRefusesAnotherSecretAndIsMissed) {
  Vorlu& vorlu = newRun();
  vorlu.keys.signingSecret = "stolen";
  fetchServerData(vorlu);
  EXPECT_EQ(server->exchanges().at(0).request.header("Cache-Control"), "no-cache");
  EXPECT_THAT(requests(), ElementsAre("GET /secrets 403"));
  server->stop();
  fetchServerData(vorlu);
  EXPECT_THAT(logged(), ElementsAre("Warning: No data was received from the server whilst attempting to gather Vorlu "
                                    "server data."));
}

}  // namespace
}  // namespace vorlu::test
