#include "vorlu/server/signed_request.h"

#include "tests/unit/server/server_fixture.h"
#include "vorlu/install/manifest_package.h"

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
  EXPECT_FALSE(makeSignedURL(vorlu, "b", "\xff", 20, "/p"));
  EXPECT_THAT(logged(), ElementsAre("Error: Unable to encode strings for signed URL"));
  mac.clock.set(1700000000.999);
  EXPECT_THAT(*makeSignedURL(vorlu, "", "secret-15", 20, "/secrets"), ::testing::EndsWith("&expires=1700000020"));
}

TEST_F(SignedRequest, SplitsUrlIntoBaseAndPath) {
  const std::pair<const char*, const char*> good[] = {
      {"https://s.example/manifest/all", "https://s.example /manifest/all"},
      {"http://127.0.0.1:8642/manifest", "http://127.0.0.1:8642 /manifest"},
      {"https://u:p@s.example/m?x=1#y", "https://s.example /m"},
      {"x-http+v.2://S.example", "x-http+v.2://S.example "},
      {"HTTPS://s.example/é", "HTTPS://s.example /é"},
      {"https://s.example?x=/y", "https://s.example "},
      {"https://[::1]:1/m", "https://[::1]:1 /m"},
  };
  Vorlu& vorlu = newRun();
  for (const auto& [url, split] : good) {
    const auto parts = splitServerURL(vorlu, url);
    ASSERT_TRUE(parts) << url;
    EXPECT_EQ(parts->base + " " + parts->path, split) << url;
  }
  for (const char* url : {"", "s.example/m", "/m", "https:///m", "1s://s/m", "https://s /m", "https://:80/m", "://s/m",
                          "h_s://s/m", "https://s\x7f/m"})
    EXPECT_FALSE(splitServerURL(vorlu, url)) << url;
  EXPECT_THAT(
      logged(),
      AllOf(SizeIs(10),
            Each("Error: Failed to parse Vorlu server URL. If this issue persists contact support@example.com")));
}

TEST_F(SignedRequest, ServerDataTellsWhatIsMissing) {
  const auto expectData = [this](const char* body, const Lines& texts, const Lines& lines) {
    Vorlu& vorlu = newRun();
    vorlu.keys.serverSec = "of an earlier answer";
    answer("/secrets", 200, body);
    fetchServerData(vorlu);
    EXPECT_EQ((Lines{vorlu.keys.serverData, vorlu.keys.serverSignature, vorlu.keys.serverSec}), texts) << body;
    EXPECT_THAT(logged(), linesThatBegin(lines)) << body;
  };
  const std::string failed = "Error: Vorlu server data decode failed - ";
  expectData(R"({"data": "d", "signature": "s", "sec": "c", "more": 1})", {"d", "s", "c"}, {});
  expectData(R"({"data": "d", "signature": null})", {"d", "", ""}, {});
  expectData(R"(["data"])", {"", "", ""}, {failed + "typeMismatch(Dictionary<String, Any>, Context(codingPath: []"});
  expectData(R"({"data": 5})", {"", "", ""}, {failed + R"(typeMismatch(String, Context(codingPath: ["data"])"});
  expectData("", {"", "", ""}, {failed + "dataCorrupted("});
}

TEST_F(SignedRequest, ManifestGivesVersionsThatFitIntoAFileName) {
  serveInventory(R"({"label": "SelfUpdatesNew", "url": ")" + base + R"(/manifest", "token": "t"})");
  const std::string others = R"([{"componentName": "Other"}, {"componentName": "Dialog"}, {"componentName": "Vorlu", )";
  for (const auto& [version, fits] :
       {std::pair("1.2-b+3", true), {"", false}, {"v1", false}, {"1/../x", false}, {"1 2", false}}) {
    serve("manifest.json", others + R"("latestVersion": ")" + version + "\"}]");
    EXPECT_EQ(manifestRecord(newRunWithKeys(), "Vorlu").has_value(), fits) << version;
    EXPECT_EQ(logged().front(), "Ignoring the component Other of the manifest");
  }
  serveInventory(R"({"label": "SelfUpdatesNew", "url": "no URL", "token": "t"})");
  EXPECT_EQ(endOf([this] { manifestRecord(newRunWithKeys(), "Vorlu"); }), 1);
}

}  // namespace
}  // namespace vorlu::test
