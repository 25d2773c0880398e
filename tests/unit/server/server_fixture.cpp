#include "tests/unit/server/server_fixture.h"

#include <fmt/format.h>

#include "refserver/secrets.h"
#include "vorlu/server/key_material.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"

namespace vorlu::test {
namespace {

seal::SiteFile siteAt(const std::string& base) {
  seal::SiteFile site;
  site.texts.fill("unused");
  site[SiteText::connectivityURL] = base + "/connectivity";
  site[SiteText::timestampURL] = base + "/timestamp";
  site[SiteText::serverDataURL] = base;
  site[SiteText::serverDataPath] = "/secrets";
  site[SiteText::signatureQueryPrefix] = "?signature=";
  site[SiteText::expiryQueryPrefix] = "&expires=";
  site[SiteText::requestMethod] = "GET";
  site[SiteText::authorizationPrefix] = "Bearer ";
  site[SiteText::supportContact] = "support@example.com";
  return site;
}

seal::ServerKeys serverKeys() {
  auto publicHalf = seal::RsaKey::fromPublicPem(agentKeys().agent.publicPem());
  return {std::move(*publicHalf), agentKeys().signingSecret, agentKeys().decoys};
}

}  // namespace

const seal::AgentKeys& agentKeys() {
  static const seal::AgentKeys keys{seal::RsaKey::generate(2048), "secret-15", seal::makeDecoys()};
  return keys;
}

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

::testing::Matcher<std::vector<std::string>> linesThatBegin(const std::vector<std::string>& beginnings) {
  std::vector<::testing::Matcher<std::string>> each;
  each.reserve(beginnings.size());
  for (const std::string& beginning : beginnings) each.emplace_back(::testing::StartsWith(beginning));
  return ::testing::ElementsAreArray(each);
}

ServerFixture::ServerFixture() {
  refserver::ServerConfig config{serverFolder.path(), siteAt("http://127.0.0.1"), serverKeys()};
  config.clock = [this] { return mac.clock.now(); };
  config.hook = [this](const refserver::Request& request, refserver::Response& response) {
    if (onRequest) onRequest(request, response);
  };
  server.emplace(std::move(config));
  EXPECT_TRUE(server->start());
  base = server->baseUrl();
  auto texts = seal::sealSite(siteAt(base), agentKeys());
  EXPECT_TRUE(texts);
  sealed = *texts;

  serveInventory(fmt::format(R"({{"label": "live_blueprints", "url": "{0}/live", "token": "live-token", "decoys": 2}},
                                 {{"label": "testing_blueprints", "url": "{0}/testing", "token": "testing-token"}})",
                             base));
  serve("catalog.json", R"([{"appName": "Fresh"}])");
  serve("testing.json", R"([{"appName": "Trial"}])");
  serve("timestamp.json", R"({"timestamp": 1})");
  setRunData({});
  mac.makeFolder(paths::support + "/Logs");
}

Vorlu& ServerFixture::newRun() {
  mac.platform().files.remove(paths::log);
  mac.platform().files.remove(paths::jamfLog);
  view_ = sealed.view();
  vorlu_.reset();
  site_.emplace(view_, mac.security);
  vorlu_ = std::make_unique<Vorlu>(mac.platform(), *site_);
  vorlu_->modes.standing = Standing::alone;
  requests();
  return *vorlu_;
}

Vorlu& ServerFixture::newRunWithKeys() {
  populateKeychain(newRun(), true);
  return newRun();
}

std::optional<int> ServerFixture::endOf(const std::function<void()>& flow) {
  try {
    flow();
  } catch (const RunEnded& ended) {
    return ended.status;
  }
  return std::nullopt;
}

std::vector<std::string> ServerFixture::linesOf(const std::string& path) {
  std::vector<std::string> messages;
  const auto text = mac.platform().files.read(path);
  if (!text) return messages;
  std::string_view rest = *text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(line.size() + 1);
    messages.emplace_back(line.substr(line.find("]: ") + 3));
  }
  return messages;
}

std::vector<std::string> ServerFixture::logged() {
  return linesOf(paths::log);
}
std::vector<std::string> ServerFixture::toldJamf() {
  return linesOf(paths::jamfLog);
}

std::vector<std::string> ServerFixture::requests() {
  std::vector<std::string> lines;
  for (const auto& [request, status] : server->exchanges()) {
    lines.push_back(fmt::format("{} {} {}", request.method, request.path, status));
  }
  server->forgetExchanges();
  return lines;
}

void ServerFixture::serve(const char* file, const std::string& text) {
  writeFile(serverFolder / (std::string("/") + file), text);
}

void ServerFixture::serveInventory(const std::string& records) {
  serve("inventory.json", fmt::format(R"({{"SecInventory": [{}]}})", records));
}

std::string ServerFixture::secretsAnswer(const std::string& document, const seal::RsaKey& key) {
  const auto texts = refserver::sealInventory(document, key);
  return fmt::format(R"({{"data": "{}", "signature": "{}", "sec": "{}"}})", texts.data, texts.signature, texts.sec);
}

void ServerFixture::answer(const std::string& path, int status, const std::string& body) {
  onRequest = [=](const refserver::Request& request, refserver::Response& response) {
    if (request.path != path) return;
    response.status = status;
    response.body = body;
  };
}

void ServerFixture::setRunData(const RunDataFile& file) {
  mac.write(paths::runData, encodePropertyList(file));
}

RunDataFile ServerFixture::runData() {
  return *loadRunData(mac.platform().files);
}

}  // namespace vorlu::test
