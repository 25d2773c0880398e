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

}  // namespace
}  // namespace vorlu::test
