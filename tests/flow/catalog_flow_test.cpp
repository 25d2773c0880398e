#include <fmt/format.h>

#include <chrono>

#include "tests/unit/server/server_fixture.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/state/paths.h"

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
  std::vector<std::string> fetched(bool skipWindowCheck = false) {
    Vorlu& vorlu = newRun();
    fetchCatalog(vorlu, skipWindowCheck);
    return names(vorlu);
  }
  static std::vector<std::string> names(const Vorlu& vorlu) {
    std::vector<std::string> all;
    for (const AppBlueprints& entry : vorlu.catalog.entries) all.push_back(orEmpty(entry.appName));
    return all;
  }
  void at(sys_seconds time) { mac.clock.set(static_cast<double>(time.time_since_epoch().count())); }
  std::string copyText() { return mac.read(paths::offlineData); }
};

TEST_F(CatalogFlow, AsksTheServerTwiceALondonDay) {
  const struct {
    sys_seconds midnight;  ///< in London
    const char* season;
  } days[] = {{sys_days(2026y / January / 15), "winter"}, {sys_days(2026y / July / 1) - 1h, "summer"}};
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  for (const auto& day : days) {
    const std::pair<seconds, bool> steps[] = {{3h, false},       {10h - 1s, false}, {10h, true},  {10h + 1s, false},
                                              {14h - 1s, false}, {14h, true},       {15h, false}, {24h - 1s, false},
                                              {24h + 9h, false}, {24h + 13h, true}};
    for (const auto& [time, asks] : steps) {
      at(day.midnight + time);
      fetched();
      EXPECT_THAT(logged(), ElementsAre(asks ? connecting : obtaining)) << day.season << ' ' << time.count();
      EXPECT_EQ(requests().size(), asks ? 1U : 0U) << day.season << ' ' << time.count();
    }
  }
}

TEST_F(CatalogFlow, StampsTheWindowBeforeTheAnswer) {
  newRunWithKeys();
  mac.write(paths::offlineData, oldCopy);
  at(noon);
  std::optional<std::int64_t> stampSeen;
  onRequest = [&](const refserver::Request&, refserver::Response& response) {
    stampSeen = runData().LastServerTimestamp;
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
  EXPECT_EQ(mac.platform().files.info(paths::offlineData)->mode, 0644);
  EXPECT_EQ(runData().LastServerTimestamp, std::nullopt);

  mac.write(paths::onlineMarker, "");
  mac.write(paths::offlineData, oldCopy);
  EXPECT_THAT(fetched(), ElementsAre("Fresh", "")) << "marker file";
  at(noon);
  EXPECT_THAT(fetched(), ElementsAre("Fresh", ""));
  EXPECT_EQ(runData().LastServerTimestamp, noon.time_since_epoch() / 1s) << "stamped although the marker decides";
}

TEST_F(CatalogFlow, CallerDecidesWithoutWindowCheck) {
  newRunWithKeys();
  at(noon);
  mac.write(paths::offlineData, oldCopy);
  Vorlu& offline = newRun();
  offline.catalog.offlineMode = true;
  fetchCatalog(offline, true);
  EXPECT_THAT(names(offline), ElementsAre("Old"));
  EXPECT_THAT(fetched(true), ElementsAre("Fresh"));
  EXPECT_EQ(runData().LastServerTimestamp, std::nullopt);

  mac.platform().files.remove(paths::offlineData);
  Vorlu& missing = newRun();
  missing.catalog.offlineMode = true;
  fetchCatalog(missing, true);
  EXPECT_THAT(names(missing), ElementsAre("Fresh"));
  EXPECT_FALSE(missing.catalog.offlineMode);
}

struct BadAnswer {
  const char* what;
  int status;
  std::string body;
  std::string line;  ///< its beginning
};
const BadAnswer badAnswers[] = {
    {"empty body", 200, "", decodeFailed + "dataCorrupted("},
    {"error page", 404, "<html><body>Not Found</body></html>", decodeFailed + "dataCorrupted("},
    {"truncated", 200, R"([{"appName": "A"}, {"appName": "B)", decodeFailed + "dataCorrupted("},
    {"refusal", 401, R"({"message": "no"})", decodeFailed + "Server temporarily unavailable. Please try again later"},
    {"wrong type", 200, R"([{}, {"appName": "A", "mode": "755"}])",
     decodeFailed + R"(typeMismatch(Int, Context(codingPath: ["Index 1", "mode"], debugDescription: "Expected to )" +
         R"(decode Int but found a string instead.", underlyingError: nil)))"},
    {"array of texts", 200, R"(["A"])", decodeFailed + "typeMismatch("},
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
  const auto testingRun = [this]() -> Vorlu& {
    Vorlu& vorlu = newRun();
    vorlu.modes.testingBlueprints = true;
    return vorlu;
  };
  Vorlu& good = testingRun();
  fetchCatalog(good, false);
  EXPECT_THAT(names(good), ElementsAre("Trial"));
  EXPECT_EQ(copyText(), oldCopy);
  for (const auto& bad : badAnswers) {
    answer("/testing", bad.status, bad.body);
    Vorlu& vorlu = testingRun();
    EXPECT_EQ(endOf([&] { fetchCatalog(vorlu, true); }), 1) << bad.what;
    EXPECT_THAT(logged(), ElementsAre(connecting, StartsWith(bad.line), "Exiting...")) << bad.what;
    EXPECT_THAT(toldJamf(), ElementsAre()) << bad.what;
  }
  server->stop();
  Vorlu& vorlu = testingRun();
  EXPECT_EQ(endOf([&] { fetchCatalog(vorlu, true); }), 1);
  EXPECT_THAT(logged(),
              ElementsAre(connecting, noAnswer,
                          "Error: No data was received from the server whilst attempting to gather application "
                          "information. Please retry later...",
                          "Exiting..."));
  EXPECT_EQ(copyText(), oldCopy);
}

TEST_F(CatalogFlow, NoCatalogAtAllEndsTheRun) {
  newRunWithKeys();
  answer("/live", 200, "");
  Vorlu& vorlu = newRun();
  EXPECT_EQ(endOf([&] { fetchCatalog(vorlu, false); }), 1);
  EXPECT_THAT(logged(), ElementsAre(connecting, StartsWith(decodeFailed),
                                    "Error: The offline Application data was not found. Unable to continue with "
                                    "decode. Please contact support@example.com for support",
                                    "Exiting..."));
  EXPECT_THAT(toldJamf(), ElementsAre("Error: The offline data was not found. Unable to continue with decode. Please "
                                      "contact support@example.com for support"));

  for (const char* damaged : {"", "{}", R"([{"mode": "755"}])", R"([{"appName": "A"},)"}) {
    mac.write(paths::offlineData, damaged);
    Vorlu& next = newRun();
    EXPECT_EQ(endOf([&] { loadOfflineCatalog(next); }), 1) << damaged;
    EXPECT_THAT(logged(), ElementsAre(StartsWith("Error: Offline JSON Data decode failed - "), "Exiting..."))
        << damaged;
    EXPECT_THAT(toldJamf(), ElementsAre(StartsWith("Error: Offline JSON Data decode failed - "))) << damaged;
  }
  mac.platform().files.remove(paths::offlineData);
  mac.makeFolder(paths::offlineData);
  EXPECT_EQ(endOf([&] { loadOfflineCatalog(newRun()); }), 1) << "a directory";
  EXPECT_THAT(toldJamf(), ElementsAre(StartsWith("Error: Offline JSON Data decode failed - ")));
}

}  // namespace
}  // namespace vorlu::test
