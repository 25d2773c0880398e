#include "refserver/server.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "refserver/access_line.h"
#include "refserver/host_clock.h"
#include "refserver/options.h"
#include "refserver/sample_data.h"
#include "seal/small_file.h"
#include "tests/unit/refserver/http_client.h"
#include "vorlu/platform/linux/linux_security.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/site.h"

namespace vorlu::refserver {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::int64_t start = 1700000000;

std::string messageOf(const Answer& answer) {
  const json body = json::parse(answer.body, nullptr, false);
  return body.is_object() ? body.value("message", "") : "";
}

struct ReferenceServer : testing::Test {
  ReferenceServer() {
    std::string name = (fs::temp_directory_path() / "server.XXXXXX").string();
    folder = ::mkdtemp(name.data());
  }
  ~ReferenceServer() override {
    server.reset();
    fs::remove_all(folder);
  }

  void SetUp() override {
    auto site = seal::readSiteFile(VORLU_SITE_FILE);
    ASSERT_TRUE(site) << site.error();
    auto keys = seal::readServerKeys(VORLU_SITE_KEYS);
    ASSERT_TRUE(keys) << keys.error();
    secret = keys->signingSecret;
    ServerConfig config{.dataFolder = folder, .site = std::move(*site), .keys = std::move(*keys)};
    config.clock = [this] { return now.load(); };
    config.hook = [this](const Request& request, Response& response) {
      if (hook) hook(request, response);
    };
    server = std::make_unique<Server>(std::move(config));
    const auto port = server->start();
    ASSERT_TRUE(port) << port.error();
    base = server->baseUrl();
    const Status status = makeSampleData(folder, base);
    ASSERT_TRUE(status) << status.error();
  }

  void write(const std::string& name, const std::string& content) const {
    const Status status = seal::replaceFile(folder + "/" + name, content, 0644);
    ASSERT_TRUE(status) << status.error();
  }
  json inventory() const { return json::parse(*seal::readSmallFile(folder + "/inventory.json")).at("SecInventory"); }
  std::string token(const std::string& label) const {
    for (const json& record : inventory()) {
      if (record.at("label") == label) return record.at("token");
    }
    return "";
  }
  std::string signedUrl(const std::string& path, const std::string& with, std::int64_t expiry) const {
    return base + path + "?signature=" + signatureOf(with, path, expiry) + "&expires=" + std::to_string(expiry);
  }
  Answer withToken(const std::string& path, const std::string& value) const {
    return request(base + path, {"Authorization: " + value});
  }

  std::string folder;
  std::string base;
  std::string secret;
  std::atomic<double> now = static_cast<double>(start);
  std::function<void(const Request&, Response&)> hook;
  std::unique_ptr<Server> server;
};

TEST_F(ReferenceServer, OpenEndpointsAnswer) {
  const Answer head = request(base + "/connectivity", {}, "HEAD");
  EXPECT_TRUE(head.arrived);
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(request(base + "/connectivity").status, 200);
  EXPECT_EQ(json::parse(request(base + "/timestamp?nocache=1700000000.25").body), json({{"timestamp", 1}}));
  const Answer unknown = request(base + "/elsewhere");
  EXPECT_EQ(unknown.status, 404);
  EXPECT_NE(messageOf(unknown), "");
  EXPECT_EQ(request(base + "/timestamp", {}, "DELETE").status, 405);
}

TEST_F(ReferenceServer, AgentOpensTheSecrets) {
  json records = inventory();
  records[0]["decoys"] = 3;
  write("inventory.json", json{{"SecInventory", records}}.dump());

  const Answer answer = request(signedUrl("/secrets", secret, start + 20));
  ASSERT_EQ(answer.status, 200) << answer.body;
  const json body = json::parse(answer.body);
  const auto part = [&body](const char* name) { return base64Decode(body.at(name).get<std::string>()).value(); };
  LinuxSecurity security;
  const Site site(sealedSite, security);
  const auto key = security.rsaDecrypt(part("signature"), site.privateKey());
  ASSERT_TRUE(key) << key.error();
  const auto plain = security.aesDecrypt(part("data"), *key, part("sec"));
  ASSERT_TRUE(plain) << plain.error();

  const json sent = json::parse(*plain).at("SecInventory");
  ASSERT_EQ(sent.size(), 3U);
  const std::string hidden = sent[0].at("token");
  EXPECT_EQ(hidden.size(), token("live_blueprints").size() + 3 * seal::decoyLength);
  EXPECT_EQ(stripDecoys(sealedSite, hidden), token("live_blueprints"));
  EXPECT_EQ(sent[0].size(), 3U);  // label, url and token: the count of decoys stays here
  EXPECT_EQ(sent[2].at("token"), token("SelfUpdatesNew"));

  const json again = json::parse(request(signedUrl("/secrets", secret, start + 20)).body);
  EXPECT_NE(again.at("sec"), body.at("sec"));
  EXPECT_NE(again.at("data"), body.at("data"));
}

TEST_F(ReferenceServer, SignedEndpointsRefuse) {
  const std::string manifest = token("SelfUpdatesNew");
  struct Case {
    std::string url;
    long status;
    std::string told;
  };
  const Case cases[] = {
      {signedUrl("/secrets", secret, start + 20), 200, ""},
      {signedUrl("/secrets", secret, start - 1), 403, "expired"},
      {signedUrl("/secrets", secret, start + 26), 403, "too far ahead"},
      {signedUrl("/secrets", secret + "x", start + 20), 403, "wrong"},
      {base + "/secrets", 403, "must be signed"},
      {signedUrl("/manifest", manifest, start + 20), 200, ""},
      {signedUrl("/manifest", secret, start + 20), 403, "wrong"},
      {signedUrl("/manifest", manifest, start - 1), 403, "expired"},
      {base + "/manifest", 403, "must be signed"},
  };
  for (const Case& one : cases) {
    const Answer answer = request(one.url);
    EXPECT_EQ(answer.status, one.status) << one.url;
    EXPECT_NE(messageOf(answer).find(one.told), std::string::npos) << answer.body;
  }

  const std::string url = signedUrl("/secrets", secret, start + 20);
  now = start + 20.9;
  EXPECT_EQ(request(url).status, 200);
  now = start + 21;
  EXPECT_EQ(request(url).status, 403);
}

TEST_F(ReferenceServer, CatalogsNeedTheirOwnToken) {
  write("catalog.json", R"([{"appName": "Live"}])");
  write("testing.json", R"([{"appName": "Testing"}])");
  const std::string live = token("live_blueprints");
  const std::string testing = token("testing_blueprints");
  EXPECT_EQ(withToken("/catalog/live", "Bearer " + live).body, R"([{"appName": "Live"}])");
  EXPECT_EQ(withToken("/catalog/testing", "Bearer " + testing).body, R"([{"appName": "Testing"}])");

  EXPECT_EQ(request(base + "/catalog/live").status, 401);
  for (const std::string& value : {live, "Bearer " + testing, "Bearer  " + live, "bearer " + live,
                                   std::string("Bearer "), "Bearer " + live.substr(1)}) {
    const Answer answer = withToken("/catalog/live", value);
    EXPECT_EQ(answer.status, 401) << value;
    EXPECT_NE(messageOf(answer), "");
  }
}

TEST_F(ReferenceServer, EditsCountAtTheNextRequest) {
  EXPECT_EQ(json::parse(request(base + "/timestamp").body).at("timestamp"), 1);
  write("timestamp.json", R"({"timestamp": 1700000001})");
  EXPECT_EQ(json::parse(request(base + "/timestamp").body).at("timestamp"), 1700000001);

  json records = inventory();
  const std::string old = token("live_blueprints");
  records[0]["token"] = "rotated";
  records[0]["url"] = "http://elsewhere.example:99/new/place";
  write("inventory.json", json{{"SecInventory", records}}.dump());
  EXPECT_EQ(withToken("/catalog/live", "Bearer " + old).status, 404);
  EXPECT_EQ(withToken("/new/place", "Bearer " + old).status, 401);
  EXPECT_EQ(withToken("/new/place", "Bearer rotated").status, 200);
}

TEST_F(ReferenceServer, BrokenDataFilesAreNamed) {
  const std::string live = "Bearer " + token("live_blueprints");
  const std::string signedManifest = signedUrl("/manifest", token("SelfUpdatesNew"), start + 20);
  const std::string signedSecrets = signedUrl("/secrets", secret, start + 20);
  struct Case {
    const char* file;
    std::string content;
    std::string url;
  };
  const Case cases[] = {
      {"catalog.json", "[{]", base + "/catalog/live"},
      {"catalog.json", "{}", base + "/catalog/live"},
      {"manifest.json", "", signedManifest},
      {"timestamp.json", "[]", base + "/timestamp"},
      {"timestamp.json", R"({"timestamp": "1"})", base + "/timestamp"},
      {"timestamp.json", R"({"timestamp": 1.5})", base + "/timestamp"},
      {"inventory.json", "{}", signedSecrets},
      {"inventory.json", R"({"SecInventory": [{"label": "a", "url": "b"}]})", signedSecrets},
      {"inventory.json", R"({"SecInventory": [{"label": "a", "url": "b", "token": "c", "decoys": 11}]})",
       signedSecrets},
      {"inventory.json", "nothing", base + "/catalog/live"},
  };
  for (const Case& one : cases) {
    write(one.file, one.content);
    const Answer answer = request(one.url, {"Authorization: " + live});
    EXPECT_EQ(answer.status, 500) << one.file << " " << one.content;
    EXPECT_TRUE(messageOf(answer).starts_with(std::string(one.file) + ": ")) << answer.body;
  }
  fs::remove(folder + "/timestamp.json");
  EXPECT_EQ(messageOf(request(base + "/timestamp")), "timestamp.json: No such file or directory");
}

TEST_F(ReferenceServer, FilesStayInTheirFolder) {
  std::string large(300000, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 31 + i / 65536);
  fs::create_directories(folder + "/files/icons");
  fs::create_directories(folder + "/files-private");
  write("files/large.pkg", large);
  write("files/empty", "");
  write("files/icons/a b.png", "icon");
  write("files-private/x", "private");
  fs::create_symlink("../catalog.json", folder + "/files/way-out");
  fs::create_symlink("large.pkg", folder + "/files/link");

  EXPECT_EQ(request(base + "/files/large.pkg").body, large);
  EXPECT_EQ(request(base + "/files/link").body, large);
  EXPECT_EQ(request(base + "/files/empty").status, 200);
  EXPECT_EQ(request(base + "/files/icons/a%20b.png").body, "icon");
  for (const char* path :
       {"/files/", "/files/absent", "/files/icons", "/files/../catalog.json", "/files/%2e%2e/catalog.json",
        "/files/icons/..%2f..%2fcatalog.json", "/files//etc/passwd", "/files/%2fetc/passwd",
        "/files/../files-private/x", "/files/way-out", "/files/large.pkg%00.txt", "/files/a%0Ab"}) {
    const Answer answer = request(base + path);
    EXPECT_EQ(answer.status, 404) << path;
    EXPECT_NE(messageOf(answer), "") << path;
  }
}

TEST_F(ReferenceServer, RecordsRequests) {
  request(base + "/catalog/live?a=b%20c", {"Authorization: Bearer x"});
  request(base + "/connectivity", {}, "HEAD");
  const auto exchanges = server->exchanges();
  ASSERT_EQ(exchanges.size(), 2U);
  EXPECT_EQ(exchanges[0].request.method, "GET");
  EXPECT_EQ(exchanges[0].request.path, "/catalog/live");
  EXPECT_EQ(exchanges[0].request.query, "a=b%20c");
  EXPECT_EQ(exchanges[0].request.header("authorization"), "Bearer x");
  EXPECT_EQ(exchanges[0].status, 401);
  EXPECT_EQ(exchanges[1].request.method, "HEAD");
  server->forgetExchanges();
  EXPECT_TRUE(server->exchanges().empty());
}

TEST_F(ReferenceServer, HookScriptsFaults) {
  write("files/f", std::string(200000, 'x'));
  const auto withFault = [this](const Fault& fault, double limitSeconds) {
    hook = [fault](const Request&, Response& response) { response.fault = fault; };
    return request(base + "/files/f", {}, "GET", limitSeconds);
  };
  const Answer dropped = withFault({.dropAfter = 70000}, 10);
  EXPECT_FALSE(dropped.arrived);
  EXPECT_EQ(dropped.status, 200);
  EXPECT_EQ(dropped.body.size(), 70000U);

  const Answer unanswered = withFault({.noAnswer = true}, 10);
  EXPECT_FALSE(unanswered.arrived);
  EXPECT_EQ(unanswered.status, 0);

  const Answer stalled = withFault({.stallAfter = 10}, 0.2);
  EXPECT_FALSE(stalled.arrived);
  EXPECT_EQ(stalled.body.size(), 10U);

  EXPECT_EQ(withFault({.delay = std::chrono::minutes(1)}, 0.1).status, 0);

  hook = [](const Request&, Response& response) {
    response = messageResponse(503, "busy");
    response.headers = {{"Retry-After", "9"}};
  };
  EXPECT_EQ(messageOf(request(base + "/files/f")), "busy");
  server->stop();  // ends the delay that is still under way
  EXPECT_EQ(request(base + "/connectivity").status, 0);
}

TEST_F(ReferenceServer, TakenPortIsAFailure) {
  auto keys = seal::readServerKeys(VORLU_SITE_KEYS);
  ASSERT_TRUE(keys) << keys.error();
  ServerConfig config{.dataFolder = folder, .site = {}, .keys = std::move(*keys)};
  config.port = std::stoi(base.substr(base.rfind(':') + 1));
  EXPECT_FALSE(Server(std::move(config)).start());
}

TEST_F(ReferenceServer, SampleDataKeepWhatIsThere) {
  const std::string live = token("live_blueprints");
  EXPECT_NE(live, token("testing_blueprints"));
  write("catalog.json", "[1]");
  fs::remove(folder + "/timestamp.json");
  ASSERT_TRUE(makeSampleData(folder, "http://other"));
  EXPECT_EQ(token("live_blueprints"), live);
  EXPECT_EQ(*seal::readSmallFile(folder + "/catalog.json"), "[1]");
  EXPECT_TRUE(fs::exists(folder + "/timestamp.json"));
}

TEST_F(ReferenceServer, HostClockFollowsItsFile) {
  const ClockFunction clock = hostClock(folder + "/host.json");
  const auto isReal = [&clock] { return std::abs(clock() - systemSeconds()) < 60; };
  EXPECT_TRUE(isReal());
  write("host.json", R"({"clock": {"real": 0, "mac": 5, "rate": 0}})");
  EXPECT_EQ(clock(), 5);
  const double real = systemSeconds();
  write("host.json", json{{"clock", {{"real", real - 100}, {"mac", 1000}, {"rate", 60}}}}.dump());
  EXPECT_NEAR(clock(), 7000, 60 * 60);
  EXPECT_GE(clock(), 7000);
  write("host.json", R"({"clock": {"real": 0}})");
  EXPECT_TRUE(isReal());
  write("host.json", R"({"clo)");
  EXPECT_TRUE(isReal());
}

TEST(ServerAccessLine, StaysOneLine) {
  const Exchange exchange{.request = {.method = "GET",
                                      .path = "/a\n\x1b"
                                              "b",
                                      .query = "signature=s"},
                          .status = 404};
  EXPECT_EQ(accessLine(1767225600.7, exchange), "2026-01-01T00:00:00Z GET /a\\x0a\\x1bb 404");
}

TEST(ServerOptions, ArgumentsThatCantBe) {
  const std::vector<std::string> cases[] = {{},
                                            {"--data"},
                                            {"--data", "d", "--port", "65536"},
                                            {"--data", "d", "--port", "8x"},
                                            {"--data", "d", "--init", "d"},
                                            {"--data", "d", "--verbose", "1"}};
  for (const auto& arguments : cases) EXPECT_FALSE(parseOptions(arguments));
  const auto options = parseOptions({"--data", "d", "--site", "/etc/sites/acme.json", "--port", "0"});
  ASSERT_TRUE(options) << options.error();
  EXPECT_EQ(options->keyFolder, "/etc/sites/keys/acme");
  EXPECT_EQ(options->port, 0);
}

}  // namespace
}  // namespace vorlu::refserver
