#include "tests/support/hostile_server.h"

#include <fmt/format.h>
#include <sys/resource.h>

#include <fstream>
#include <future>

#include "refserver/secrets.h"
#include "tests/unit/server/server_fixture.h"
#include "vorlu/install/download.h"
#include "vorlu/reporting/submit_report.h"
#include "vorlu/server/catalog_fetch.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/reachability.h"
#include "vorlu/server/signed_request.h"
#include "vorlu/state/replacement.h"

namespace vorlu::test {
namespace {

using std::chrono::seconds;

/// One row of hostile_answers.txt, which explains them.
struct Behaviour {
  std::string name, end, endOfDownload;
  Proof proof = Proof::none;
  RawAnswer answer;
};

std::string bytesOf(std::string_view text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '|') {
      bytes += "\r\n";
    } else if (text.substr(at, 2) == "\\x") {
      bytes += static_cast<char>(std::stoi(std::string(text.substr(at + 2, 2)), nullptr, 16));
      at += 3;
    } else if (text.substr(at, 2) == "%{") {
      const auto blank = text.find(' ', at), end = text.find('}', at);
      const std::string part = bytesOf(text.substr(blank + 1, end - blank - 1));
      for (auto count = std::stoul(std::string(text.substr(at + 2, blank))); count > 0; --count) bytes += part;
      at = end;
    } else {
      bytes += text[at];
    }
  }
  return bytes;
}

template <class Value>
Value named(const std::string& name, const std::vector<std::string>& names) {
  return static_cast<Value>(std::find(names.begin(), names.end(), name) - names.begin());
}

/// The rows of a file beside this one, each in so many parts.
std::vector<Lines> rowsOf(const std::string& file, std::size_t count) {
  std::ifstream rows(VORLU_SOURCE_DIR "/tests/flow/" + file);
  std::vector<Lines> all;
  for (std::string row; std::getline(rows, row);) {
    if (row.starts_with('#')) continue;
    Lines& list = all.emplace_back();
    for (; list.size() + 1 < count; row.erase(0, row.find("; ") + 2)) list.push_back(row.substr(0, row.find("; ")));
    list.push_back(row);
  }
  return all;
}

std::vector<Behaviour> behaviours() {
  const TemporaryFolder folder;
  const std::string line = "cd " + folder.path() + " && head -c 300000000 /dev/zero | gzip -9 >1 && gzip -9 <1 >2";
  EXPECT_EQ(std::system(line.c_str()), 0);
  const std::string bomb = readFile(folder / "/1"), bomb2 = readFile(folder / "/2");
  std::vector<Behaviour> all;
  for (const Lines& parts : rowsOf("hostile_answers.txt", 5)) {
    const auto slash = parts[1].find('/'), more = parts[4].find(" >> ");
    std::string bytes = bytesOf(parts[4].substr(0, more));
    for (const auto& [mark, text] : {std::pair{"@BOMB2", bomb2}, {"@BOMB", bomb}, {"@CUT", bomb.substr(0, 100)}})
      bytes = replacedAll(bytes, mark, text);
    all.push_back(
        {parts[0],
         parts[1].substr(0, slash),
         parts[1].substr(slash + 1),
         named<Proof>(parts[2], {"none", "sound", "expired", "otherHost", "unknownRoot", "selfSigned", "oldProtocol"}),
         {std::move(bytes), named<Then>(parts[3], {"close", "reset", "stall", "trickle", "flood"}),
          more == std::string::npos ? "" : bytesOf(parts[4].substr(more + 4))}});
  }
  return all;
}

/// One thing that the agent asks its server for.
struct Role {
  std::string name, path, body;
  bool readsStatus;
  std::string errorLine, uselessLine;
};

void ask(Vorlu& v, const std::string& role) {
  if (role == "catalog") return fetchCatalog(v, true);
  if (role == "secrets") return populateKeychain(v, true);
  if (role == "timestamp") return static_cast<void>(refreshCertificates(v));
  if (role == "manifest") return static_cast<void>(fetchComponentManifest(v));
  if (role == "report") return v.log(verdictOnReply(*submitReport(v, "{}")));
  if (role == "reachability") return checkServerReachable(v);
  const std::string url = fetchInventoryValue(v, "file", false);
  downloadFile(v, true, {url, paths::downloads + "/Slides-v2.0.zip", "Authorization", "Bearer t"});
}

/// A Mac whose server behaves in one way to one role, and well otherwise.
class HostileCase {
 public:
  HostileCase(const Role& role, const Behaviour& behaviour, const TestAuthority& authority)
      : role_(role),
        behaviour_(behaviour),
        foreign_([this](const auto&) { return RawAnswer{"HTTP/1.1 200 OK\r\n\r\n" + role_.body}; }, Proof::none,
                 authority),
        server_([this](const std::string& request) { return answer(request); }, behaviour.proof, authority),
        mac_({authority.file("root.pem"), seconds(2), seconds(6), seconds(4), 1 << 16, ~std::uint64_t{0}}),
        sealed_(*seal::sealSite(siteAt(server_.base()), agentKeys())),
        view_(sealed_.view()),
        site_(view_, mac_.security),
        vorlu_(mac_.platform(), site_) {
    mac_.addApplication("/Applications/Slides.app", "com.example.slides", "1.0");
    mac_.write(paths::offlineData, R"([{"appName": "Kept"}])");
    mac_.makeFolder(paths::downloads);
    vorlu_.modes.standing = Standing::alone;
    vorlu_.keys.inventory = *decodeJson<VorluSecrets>(inventory());
  }

  /// What went otherwise than it must.
  Lines violations() {
    const auto begun = std::chrono::steady_clock::now();
    const std::string before = state();
    ask(vorlu_, role_.name);
    Lines wrong;
    const auto demand = [&](bool holds, const std::string& what) {
      if (!holds)
        wrong.push_back(
            fmt::format("{}, {}: {}: {}", role_.name, behaviour_.name, what, fmt::join(mac_.systemLog.lines(), " | ")));
    };
    demand(std::chrono::steady_clock::now() - begun < seconds(60), "took too long");
    const bool download = role_.path == "/file";
    const std::string& end = download ? behaviour_.endOfDownload : behaviour_.end;
    const bool refused = behaviour_.answer.bytes.find(" 200 OK\r\n") == std::string::npos;
    const bool told = end == "useless" && (refused || !role_.readsStatus);
    demand(logs(role_.errorLine) == (end == "error"), "the transport's end isn't told as it was");
    demand(logs(role_.uselessLine) == told, "what came isn't told as it was");
    demand(state() == before || (end == "good" && role_.name == "catalog"), "the state was changed");
    demand(mac_.files.list(paths::downloads)->empty() == (!download || end == "error" || told), "wrong downloads");
    for (const std::string& request : foreign_.requests())
      demand(request.find("Bearer") == std::string::npos, "a credential went to another host");
    return wrong;
  }

 private:
  RawAnswer answer(const std::string& request) {
    const auto keys = refserver::sealInventory(inventory(), agentKeys().agent);
    if (request.starts_with("GET /secrets") && role_.path != "/secrets")
      return {fmt::format("HTTP/1.1 200 OK\r\n\r\n{{\"data\": \"{}\", \"signature\": \"{}\", \"sec\": \"{}\"}}",
                          keys.data, keys.signature, keys.sec)};
    RawAnswer given = behaviour_.answer;
    for (const auto& [mark, text] : {std::pair{"@SIZE", std::to_string(role_.body.size())},
                                     {"@BODY", role_.body},
                                     {"@BASE", server_.base()},
                                     {"@FOREIGN", foreign_.base()},
                                     {"@TURN", fmt::format("/{}", ++turns_)}})
      given.bytes = replacedAll(given.bytes, mark, text);
    given.bytes =
        replacedAll(given.bytes, "@LENGTH", std::to_string(given.bytes.size() - given.bytes.find("\r\n\r\n") - 4));
    return given;
  }
  std::string inventory() const {
    return replacedAll(R"({"SecInventory": [{"label": "live_blueprints", "url": "@/live", "token": "t"},
        {"label": "SelfUpdatesNew", "url": "@/manifest", "token": "t"}, {"label": "reports", "url": "@/report"},
        {"label": "file", "url": "@/file"}]})",
                       "@", server_.base());
  }
  bool logs(const std::string& beginning) {
    const Lines lines = mac_.systemLog.lines();
    return std::any_of(lines.begin(), lines.end(), [&](const auto& line) { return line.starts_with(beginning); });
  }
  std::string state() {
    return mac_.read(paths::offlineData) + mac_.read(paths::runData) +
           mac_.read("/Applications/Slides.app/Contents/Info.plist") +
           fmt::format("{}", fmt::join(*mac_.files.list("/Applications"), "/"));
  }

  const Role& role_;
  const Behaviour& behaviour_;
  std::atomic<int> turns_ = 0;
  HostileServer foreign_, server_;
  TestPlatform mac_;
  seal::SealedTexts sealed_;
  SealedSite view_;
  Site site_;
  Vorlu vorlu_;
};

TEST(HostileServers, AreToldAndChangeNothing) {
  const TestAuthority authority;
  const std::vector<Behaviour> all = behaviours();
  std::vector<Role> asked;
  for (const Lines& row : rowsOf("hostile_roles.txt", 6))
    asked.push_back({row[0], row[1], row[2], row[3] == "status", row[4], row[5]});
  agentKeys();
  ASSERT_GE(all.size() * asked.size(), 500U);
  const std::size_t step = std::getenv("VORLU_HOSTILE_ALL") ? 1 : 4;  // by default a sample that meets every role
  std::atomic<std::size_t> next = 0, cases = 0;
  std::mutex large;  // only one at a time takes memory by the ten megabytes
  const auto work = [&] {
    Lines wrong;
    for (std::size_t number = next.fetch_add(step); number < all.size() * asked.size(); number = next.fetch_add(step)) {
      ++cases;
      const Behaviour& behaviour = all[number / asked.size()];
      std::unique_lock lock(large, std::defer_lock);
      if (behaviour.answer.then == Then::flood || behaviour.name.starts_with("bomb")) lock.lock();
      wrong = joined(std::move(wrong), HostileCase(asked[number % asked.size()], behaviour, authority).violations());
    }
    return wrong;
  };
  std::vector<std::future<Lines>> workers;
  for (int count = 0; count < 16; ++count) workers.push_back(std::async(std::launch::async, work));
  Lines wrong;
  for (auto& worker : workers) wrong = joined(std::move(wrong), worker.get());
  rusage used{};
  ::getrusage(RUSAGE_SELF, &used);
#ifdef __SANITIZE_ADDRESS__
  constexpr long mostMiB = 1200;  // it keeps what was freed for a while
#else
  constexpr long mostMiB = 600;
#endif
  EXPECT_LT(used.ru_maxrss >> 10, mostMiB) << "MiB";
  EXPECT_THAT(wrong, ::testing::IsEmpty());
  std::printf("hostile servers: %zu behaviours, %zu cases, %zu violations\n", all.size(), cases.load(), wrong.size());
}

}  // namespace
}  // namespace vorlu::test
