#include <fmt/format.h>

#include <atomic>
#include <chrono>

#include "faults/faulty_platform.h"
#include "tests/unit/server/server_fixture.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/server/reachability.h"
#include "vorlu/server/signed_request.h"

namespace vorlu::test {
namespace {

using namespace std::chrono;
using ::testing::ElementsAre;
using ::testing::StartsWith;

const std::string connecting = "Connecting to Vorlu server...";
const std::string obtaining = "Obtaining Vorlu data...";
const std::string noAnswer =
    "No data was received from the server whilst attempting to gather application information. Will attempt to use "
    "offline data...";
const std::string decodeFailed = "Error during app data decode: ";
const std::string oldCopy = R"([{"appName":"Old"}])";
constexpr auto noon = sys_days(2026y / March / 2) + 12h;

class CatalogFlow : public ServerFixture {
 protected:
  /// Fetches in a new process; the names of the catalog's entries.
  Lines fetched(bool skipWindowCheck = false) {
    Vorlu& vorlu = newRun();
    fetchCatalog(vorlu, skipWindowCheck);
    return names(vorlu);
  }
  static Lines names(const Vorlu& vorlu) {
    Lines all;
    for (const AppBlueprints& entry : vorlu.catalog.entries) all.push_back(orEmpty(entry.appName));
    return all;
  }
  void at(sys_seconds time) { mac.clock.set(static_cast<double>(time.time_since_epoch().count())); }
  std::string copyText() { return mac.read(paths::offlineData); }
};

TEST_F(CatalogFlow, AsksTheServerTwiceALondonDay) {
  const sys_seconds londonMidnights[] = {sys_days(2026y / January / 15), sys_days(2026y / July / 1) - 1h};
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  for (const sys_seconds midnight : londonMidnights) {
    const std::pair<seconds, bool> steps[] = {{3h, false},       {10h - 1s, false}, {10h, true},  {10h + 1s, false},
                                              {14h - 1s, false}, {14h, true},       {15h, false}, {24h - 1s, false},
                                              {24h + 9h, false}, {24h + 13h, true}};
    for (const auto& [time, asks] : steps) {
      at(midnight + time);
      fetched();
      EXPECT_THAT(logged(), ElementsAre(asks ? connecting : obtaining))
          << midnight.time_since_epoch() / 1h << "h + " << time.count();
      EXPECT_EQ(requests().size(), asks ? 1U : 0U) << midnight.time_since_epoch() / 1h << "h + " << time.count();
    }
  }
}

TEST_F(CatalogFlow, StampsTheWindowBeforeTheAnswer) {
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  at(noon);
  std::atomic<std::int64_t> stampSeen = 0;
  onRequest = [&](const refserver::Request&, refserver::Response& response) {
    stampSeen = runData().LastServerTimestamp.value_or(0);
    response.fault.noAnswer = true;
  };
  EXPECT_THAT(fetched(), ElementsAre("Old"));
  EXPECT_EQ(stampSeen, noon.time_since_epoch() / 1s);
  EXPECT_THAT(logged(), ElementsAre(connecting, noAnswer));
  EXPECT_THAT(fetched(), ElementsAre("Old"));
  EXPECT_THAT(logged(), ElementsAre(obtaining)) << "the failed attempt used the window up";
}

TEST_F(CatalogFlow, SomeRunsAskAtAnyHour) {
  newRunWithKeys();
  serve("catalog.json", R"([{"appName": "Fresh", "mode": 0, "owner": "", "unknown": [1], "category": null}, {}])");
  at(sys_days(2026y / March / 2) + 3h);
  EXPECT_THAT(fetched(), ElementsAre("Fresh", "")) << "no copy";
  EXPECT_EQ(copyText(), R"([{"appName":"Fresh","owner":"","mode":0},{}])");
  EXPECT_EQ(mac.files.info(paths::offlineData)->mode, 0644);
  EXPECT_EQ(runData().LastServerTimestamp, std::nullopt);
  mac.write(paths::onlineMarker, "");
  mac.write(paths::offlineData, oldCopy);
  EXPECT_THAT(fetched(), ElementsAre("Fresh", "")) << "marker file";
}

TEST_F(CatalogFlow, CallerDecidesWithoutWindowCheck) {
  newRunWithKeys();
  at(noon);
  const auto fetchedOffline = [this] {
    Vorlu& vorlu = newRun();
    vorlu.catalog.offlineMode = true;
    fetchCatalog(vorlu, true);
    return names(vorlu);
  };
  EXPECT_THAT(fetchedOffline(), ElementsAre("Fresh")) << "without a copy";
  mac.write(paths::offlineData, oldCopy);
  EXPECT_THAT(fetchedOffline(), ElementsAre("Old"));
  EXPECT_THAT(fetched(true), ElementsAre("Fresh"));
  EXPECT_EQ(runData().LastServerTimestamp, std::nullopt);
}

struct BadAnswer {
  const char* what;
  int status;
  std::string body;
  std::string line;  ///< its beginning
};
const BadAnswer badAnswers[] = {
    {"error page", 404, "<html><body>Not Found</body></html>", decodeFailed + "dataCorrupted("},
    {"truncated", 200, R"([{"appName": "A"}, {"appName": "B)", decodeFailed + "dataCorrupted("},
    {"refusal", 401, R"({"message": "no"})", decodeFailed + "Server temporarily unavailable. Please try again later"},
    {"wrong type", 200, R"([{}, {"appName": "A", "mode": "755"}])",
     decodeFailed + R"(typeMismatch(Int, Context(codingPath: ["Index 1", "mode"], debugDescription: "Expected to )" +
         R"(decode Int but found a string instead.", underlyingError: nil)))"},
};

TEST_F(CatalogFlow, BadAnswersLeadToTheLocalCopy) {
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  for (const auto& bad : badAnswers) {
    answer("/live", bad.status, bad.body);
    EXPECT_THAT(fetched(true), ElementsAre("Old")) << bad.what;
    EXPECT_THAT(logged(), ElementsAre(connecting, StartsWith(bad.line))) << bad.what;
    EXPECT_EQ(copyText(), oldCopy) << bad.what;
  }
  answer("/live", 500, R"([{"appName": "Status"}])");
  EXPECT_THAT(fetched(true), ElementsAre("Status")) << "a body that decodes counts, whatever the status";
  server->stop();
  EXPECT_THAT(fetched(true), ElementsAre("Status"));
  EXPECT_THAT(logged(), ElementsAre(connecting, noAnswer));
}

/// Every request gets this reply.
struct OneReply : UrlSession {
  explicit OneReply(UrlReply always) : reply(std::move(always)) {}
  UrlReply send(const UrlRequest&) override { return reply; }
  DownloadReply download(const UrlRequest&, const std::string&) override { return {}; }
  const UrlReply reply;
};

TEST_F(CatalogFlow, RepliesThatLackAPartLeadToTheLocalCopy) {
  const std::string gathering = " from the server whilst attempting to gather ";
  const std::string end = "application information. Will attempt to use offline data...";
  const struct {
    UrlReply reply;
    std::string catalog, secrets;  ///< lines, the beginning of the second
  } cases[] = {
      {{{}, UrlResponse{200, ""}, {}}, "No data was received" + gathering + end, "Warning: No data was received"},
      {{"[]", {}, {}}, "No response was received" + gathering + end, "Warning: No response was received"},
      {{"[]", UrlResponse{200, ""}, "cut off"},
       "An error was received" + gathering + "application information - cut off. Will attempt to use offline data...",
       "Warning: An error was received"},
  };
  for (const auto& c : cases) {
    Vorlu& run = newRunWithKeys();
    mac.write(paths::offlineData, oldCopy);
    OneReply urls(c.reply);
    Platform platform = faults::faultyPlatform(mac.platform(), mac.files, mac.processes, urls, mac.keychain);
    Vorlu vorlu(platform, run.site);
    fetchCatalog(vorlu, true);
    EXPECT_THAT(names(vorlu), ElementsAre("Old")) << c.catalog;
    EXPECT_THAT(logged(), ElementsAre(connecting, c.catalog));
    EXPECT_EQ(copyText(), oldCopy) << c.catalog;
    fetchServerData(vorlu);
    EXPECT_EQ(vorlu.keys.serverData, "") << c.catalog;
    EXPECT_EQ(checkInternetConnection(vorlu), !c.reply.error && c.reply.response) << c.catalog;
    EXPECT_THAT(logged().back(), StartsWith(c.secrets));
  }
}

TEST_F(CatalogFlow, FullDiskLosesNoCopy) {
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  mac.files.failWrite(2);  // the log's line is the first
  EXPECT_THAT(fetched(true), ElementsAre("Old"));
  EXPECT_THAT(logged(), ElementsAre(connecting, StartsWith(decodeFailed + paths::offlineData + ": No space left")));
  EXPECT_EQ(copyText(), oldCopy);
}

TEST_F(CatalogFlow, TestingRunsNeverTouchTheLocalCopy) {
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  const auto fetchTesting = [this] {
    Vorlu& vorlu = newRun();
    vorlu.modes.testingBlueprints = true;
    fetchCatalog(vorlu, true);
    return names(vorlu);
  };
  EXPECT_THAT(fetchTesting(), ElementsAre("Trial"));
  for (const auto& bad : badAnswers) {
    answer("/testing", bad.status, bad.body);
    EXPECT_EQ(endOf(fetchTesting), 1) << bad.what;
    EXPECT_THAT(logged(), ElementsAre(connecting, StartsWith(bad.line), "Exiting...")) << bad.what;
    EXPECT_THAT(toldJamf(), ElementsAre()) << bad.what;
  }
  server->stop();
  EXPECT_EQ(endOf(fetchTesting), 1);
  EXPECT_THAT(logged(), ElementsAre(connecting, noAnswer,
                                    "Error: No data was received from the server whilst attempting to gather "
                                    "application information. Please retry later...",
                                    "Exiting..."));
  EXPECT_EQ(copyText(), oldCopy);
}

TEST_F(CatalogFlow, NoCatalogAtAllEndsTheRun) {
  newRunWithKeys();
  answer("/live", 200, "");
  EXPECT_EQ(endOf([this] { fetched(); }), 1);
  EXPECT_THAT(logged(), ElementsAre(connecting, StartsWith(decodeFailed),
                                    "Error: The offline Application data was not found. Unable to continue with "
                                    "decode. Please contact support@example.com for support",
                                    "Exiting..."));
  EXPECT_THAT(toldJamf(), ElementsAre("Error: The offline data was not found. Unable to continue with decode. Please "
                                      "contact support@example.com for support"));
  for (const char* damaged : {"", "{}", R"([{"mode": "755"}])", R"([{"appName": "A"},)"}) {
    mac.write(paths::offlineData, damaged);
    EXPECT_EQ(endOf([this] { loadOfflineCatalog(newRun()); }), 1) << damaged;
    const std::string undecoded = "Error: Offline JSON Data decode failed - ";
    EXPECT_THAT(logged(), ElementsAre(StartsWith(undecoded), "Exiting...")) << damaged;
    EXPECT_THAT(toldJamf(), ElementsAre(StartsWith(undecoded))) << damaged;
  }
}

}  // namespace
}  // namespace vorlu::test
