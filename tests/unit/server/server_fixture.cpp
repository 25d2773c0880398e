#include "tests/unit/server/server_fixture.h"

#include <fmt/format.h>

#include <sstream>

#include "refserver/secrets.h"
#include "vorlu/server/key_material.h"

namespace vorlu::test {
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
  site[SiteText::reportMethod] = "POST";
  site[SiteText::authorizationPrefix] = "Bearer ";
  site[SiteText::supportContact] = "support@example.com";
  return site;
}

namespace {

seal::ServerKeys serverKeys() {
  auto publicHalf = seal::RsaKey::fromPublicPem(agentKeys().agent.publicPem());
  return {std::move(*publicHalf), agentKeys().signingSecret, agentKeys().decoys};
}

}  // namespace

const seal::AgentKeys& agentKeys() {
  static const seal::AgentKeys keys{seal::RsaKey::generate(2048), "secret-15", seal::makeDecoys()};
  return keys;
}

::testing::Matcher<Lines> linesThatBegin(const Lines& beginnings) {
  std::vector<::testing::Matcher<std::string>> each;
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

  serveInventory(fmt::format(
      R"({{"label": "live_blueprints", "url": "{0}/live", "token": "live-token", "decoys": 2}},
                                 {{"label": "testing_blueprints", "url": "{0}/testing", "token": "testing-token"}})",
      base));
  serve("catalog.json", R"([{"appName": "Fresh"}])");
  serve("testing.json", R"([{"appName": "Trial"}])");
  serve("timestamp.json", R"({"timestamp": 1})");
  setRunData({});
  mac.makeFolder(paths::support + "/Logs");
}

Vorlu& ServerFixture::newRun() {
  mac.files.remove(paths::jamfLog);
  view_ = sealed.view();
  vorlu_.reset();
  site_.emplace(view_, mac.security);
  vorlu_ = std::make_unique<Vorlu>(mac.platform(), *site_);
  vorlu_->modes.standing = Standing::alone;
  mac.systemLog.take();
  requests();
  return *vorlu_;
}

Vorlu& ServerFixture::newRunWithKeys() {
  populateKeychain(newRun(), true);
  return newRun();
}

Lines ServerFixture::toldJamf() {
  Lines messages;
  std::istringstream text(mac.read(paths::jamfLog));
  for (std::string line; std::getline(text, line);) messages.push_back(line.substr(line.find("]: ") + 3));
  return messages;
}

Lines ServerFixture::requests() {
  Lines lines;
  for (const auto& [request, status, reason] : server->exchanges()) {
    lines.push_back(fmt::format("{} {} {}", request.method, request.path, status));
  }
  server->forgetExchanges();
  return lines;
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

}  // namespace vorlu::test
