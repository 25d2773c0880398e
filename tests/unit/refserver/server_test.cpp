#include "refserver/server.h"

#include <filesystem>

#include "tests/unit/server/server_fixture.h"

namespace vorlu::test {
namespace {

using ReferenceServer = ServerFixture;

TEST_F(ReferenceServer, FilesStayInTheirFolder) {
  namespace fs = std::filesystem;
  serve("files/icons/a b.png", "icon");
  serve("files-private/x", "private");
  fs::create_symlink("../catalog.json", serverFolder / "/files/way-out");
  const auto get = [this](const std::string& path) {
    UrlRequest request;
    request.url = base + path;
    return mac.urls.send(request);
  };
  EXPECT_EQ(get("/files/icons/a%20b.png").data, "icon");
  for (const char* path : {"/files/", "/files/absent", "/files/icons", "/files/%2e%2e/catalog.json",
                           "/files/icons/..%2f..%2fcatalog.json", "/files//etc/passwd", "/files/%2fetc/passwd",
                           "/files/%2e%2e/files-private/x", "/files/way-out", "/files/icons%00", "/files/a%0Ab"}) {
    const auto answer = get(path);
    ASSERT_TRUE(answer.response) << path << *answer.error;
    EXPECT_EQ(answer.response->status, 404) << path;
  }
}

TEST_F(ReferenceServer, ReportsAreRefusedInPlainWordsOrKeptOnce) {
  serveInventory(R"({"label": "reports", "url": "http://x/reports", "token": "t"})");
  std::string token = "Bearer unused";
  const auto answerTo = [&](const std::string& body) {
    const UrlRequest request{
        .url = base + "/reports",
        .method = "POST",
        .headers = {{"Authorization", token}, {"unused", "unused"}, {"Content-Type", "text/plain"}},
        .body = body};
    return mac.urls.send(request).data.value_or("nothing");
  };
  const std::string good = R"({"encrypted_data_hex": "11111111111111111111111111111111",
      "iv_hex": "22222222222222222222222222222222", "aes_key_encrypted_hex": "aB"})";
  EXPECT_EQ(answerTo("[]"), R"({"message":"the body is no JSON object"})");
  EXPECT_EQ(answerTo(R"({"encrypted_data_hex": "1g"})"), R"({"message":"encrypted_data_hex is no hexadecimal text"})");
  EXPECT_EQ(answerTo(std::string((16 << 20) + 1, '1')), R"({"message":"the report is larger than 16 MB"})");
  answerTo(good);
  mac.clock.advance(60);
  EXPECT_THAT(answerTo(good), ::testing::HasSubstr("upserted successfully"));
  token = "Bearer x";
  EXPECT_EQ(answerTo("[]"), R"({"message":"the token or the agent's header is missing or wrong"})");
  const auto kept = refserver::ReportStore(serverFolder / "/reports").list();
  ASSERT_EQ(kept->size(), 1u);
  EXPECT_EQ(kept->front().arrived, mac.clock.now());
}

}  // namespace
}  // namespace vorlu::test
