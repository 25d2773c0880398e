#include "vorlu/cli/coordination.h"

#include <fmt/format.h>

#include "tests/support/agent_run.h"
#include "vorlu/state/duplicates.h"
#include "vorlu/state/process_table.h"
#include "vorlu/state/run_type.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A process of the Mac; its age counts from the start of the test.
struct Other {
  pid_t pid = 4711;
  std::int64_t age = 100;
  std::string program = "/usr/local/bin/vorlu";
  std::string user = "root";
  pid_t parent = 1;
  std::string line = "vorlu --update run";
};

enum class End { alone, beside, left, failed };

/// The agent 4000, which has just been started, among others.
struct CoordinationTest : ::testing::Test, AgentRun {
  CoordinationTest() {
    store({});
    mac.makeFolder(paths::components);
    mac.write(paths::offlineData, R"([{"appName": "Slides", "appIdentifier": "slides", "serverName": "slides-server",
      "appType": "appBundle", "appPath": "/Applications/Slides.app"}, {"appName": "Notes", "appIdentifier": "notes"}])");
    vorlu.modes.requestedApp = "notes";
    mac.processes.on("/usr/bin/networkQuality", {.status = 1});
    print("/usr/bin/pgrep -x vorlu", "",
          [](const Other& o) { return o.program.ends_with("vorlu") ? fmt::format("{}\n", o.pid) : ""; });
    print(table, "  PID garbled\n", [this](const Other& o) {
      return fmt::format("{:5} {:5} {:<16} {:>11} {}\n", o.pid, o.parent, o.user, elapsed(o), o.program);
    });
    print("/bin/ps -Aww -o pid= -o command=", "", [](const Other& o) { return fmt::format("{} {}\n", o.pid, o.line); });
    add({.pid = 4000, .age = 0, .parent = 3999});
  }
  /// What a command prints: something for each process that is alive.
  template <class Print>
  void print(const std::string& command, const std::string& before, Print one) {
    mac.processes.on(command, {.reply = [this, before, one](const Command&) {
                       std::string text = before;
                       for (const Other& other : others) text += mac.processes.isAlive(other.pid) ? one(other) : "";
                       return text;
                     }});
  }
  std::string elapsed(const Other& other) {
    const auto age = other.age + static_cast<std::int64_t>(waited());
    return fmt::format("{:02}-{:02}:{:02}:{:02}", age / 86400, age / 3600 % 24, age / 60 % 60, age % 60);
  }
  void add(const Other& other, bool stubborn = false) {
    others.push_back(other);
    mac.processes.addProcess(other.pid, stubborn);
    print(fmt::format("/bin/ps -o etime= -p {}", other.pid), "  ",
          [this, other](const Other& o) { return o.pid == other.pid ? elapsed(other) + "\n" : ""; });
  }
  void endAt(Seconds when, pid_t pid) {
    mac.clock.at(when, [this, pid] { mac.processes.endProcess(pid); });
  }
  void setType(const std::string& type) {
    RunDataFile file;
    file.CurrentRunType = type;
    store(file);
  }
  End coordinate() {
    Coordination answer = Coordination::goOn;
    if (const auto status = endOf([&] { answer = coordinateInstances(vorlu); }))
      return *status == 0 ? End::left : End::failed;
    if (answer == Coordination::failed) return End::failed;
    return isAlone(vorlu) ? End::alone : End::beside;
  }
  Lines kills() {
    Lines lines = tools();
    std::erase_if(lines, [](const std::string& line) { return !line.starts_with("kill "); });
    return lines;
  }
  Seconds waited() { return mac.clock.now() - VirtualClock::defaultStart; }

  const std::string table = "/bin/ps -Aww -o pid= -o ppid= -o user= -o etime= -o comm=";
  std::vector<Other> others;
};

constexpr auto i = &RunModes::installMode, s = &RunModes::selfServiceMode, u = &RunModes::updateMode,
               f = &RunModes::forcedMode, r = &RunModes::runMode;

struct Row {
  bool RunModes::*mode;  ///< null for a report
  std::string type;
  End end;
  bool killed;
  Seconds seconds;                                      ///< how long it took
  std::int64_t age = 100;                               ///< of the other
  std::pair<Seconds, const char*> then = {0, nullptr};  ///< the run type changes
  Seconds goneAt = 0;
  bool installed = false;  ///< the app that the other installs is there
};

struct RowTest : CoordinationTest, ::testing::WithParamInterface<Row> {};

TEST_P(RowTest, EndsAsTold) {
  const Row& row = GetParam();
  if (row.mode) vorlu.modes.*row.mode = true;
  if (row.installed) mac.addApplication("/Applications/Slides.app", "com.example.slides", "1.0");
  add({.pid = 4711, .age = row.age});
  setType(row.type);
  if (row.then.second) mac.clock.at(row.then.first, [&] { setType(row.then.second); });
  if (row.goneAt > 0) endAt(row.goneAt, 4711);
  EXPECT_EQ(coordinate(), row.end);
  EXPECT_EQ(kills(), row.killed ? Lines{"kill -15 4711"} : Lines{});
  EXPECT_EQ(waited(), row.seconds);
  const bool untouched = row.end == End::left || row.end == End::beside || (!row.killed && row.goneAt == 0);
  EXPECT_EQ(readRunType(vorlu), untouched ? row.type : "N/A");
  EXPECT_EQ(mac.exists(paths::dialogCommandFile), row.killed);  // every kill quits the prompts
}

INSTANTIATE_TEST_SUITE_P(
    Table, RowTest,
    ::testing::Values(
        // an install: its phases
        Row{i, "appInstalls", End::alone, true, 121}, Row{i, "appInstallInit:slides-server", End::alone, true, 121},
        Row{s, "appInstallProgInit:gone", End::alone, true, 121},
        Row{i, "appInstallRun:slides-server", End::alone, true, 1229},
        Row{s, "appInstallProgRun:slides-server", End::alone, true, 1229, 100, {}, 0, true},
        Row{i, "appInstallRun:slides", End::alone, false, 16, 100, {7, "appInstallComplete:slides"}, 15},
        Row{i, "appInstallRun:slides", End::alone, true, 39, 100, {7, "appInstallComplete:slides"}},
        Row{i, "appInstallInit:slides", End::alone, false, 15, 100, {3, "appInstallRun:slides"}, 12},
        Row{i, "appInstallProgComplete:slides", End::alone, true, 121},
        // Self Service
        Row{s, "selfServiceInit", End::left, false, 0}, Row{s, "selfServiceUpdateRequired", End::left, false, 0},
        Row{i, "selfServiceInit", End::alone, true, 1201}, Row{i, "selfServiceUpdateRequired", End::alone, true, 1201},
        Row{i, "selfServiceInit", End::alone, true, 1211, 100, {7, "selfServiceUpdateRequired"}},
        Row{i, "selfServiceUpdateRequired", End::alone, false, 35, 100, {7, "N/A"}, 33},
        Row{i, "selfServiceUpdateRequired", End::alone, true, 1211, 100, {7, "N/A"}},
        // scheduled and forced updates
        Row{i, "scheduledUpdateInit", End::alone, true, 1}, Row{s, "forcedUpdateInit", End::alone, true, 1},
        Row{i, "scheduledUpdateInitTestPrompt", End::alone, true, 1201},
        Row{s, "forcedUpdateInitTest", End::alone, false, 25, 100, {7, "forcedUpdateRequired"}, 22},
        Row{i, "scheduledUpdateRequired", End::alone, true, 1201}, Row{i, "forcedUpdate", End::alone, true, 1201},
        // the rest
        Row{i, "hourlyUpdateCheck", End::alone, true, 1}, Row{s, "ReportingAuto", End::alone, true, 1},
        Row{i, "manualUpdateCheck", End::alone, true, 1201},
        Row{i, "manualUpdateCheck", End::alone, false, 10, 100, {}, 9}, Row{i, "somethingElse", End::alone, false, 0},
        Row{i, "N/A", End::alone, true, 301}, Row{s, "", End::alone, false, 40, 100, {}, 33},
        Row{i, "N/A", End::alone, true, 11, 100, {4, "scheduledUpdateInit"}},
        // those that don't wait
        Row{u, "appInstallRun:slides", End::left, false, 0}, Row{f, "N/A", End::left, false, 0, 20000},
        Row{nullptr, "appInstallRun:slides", End::beside, false, 0}, Row{r, "N/A", End::left, false, 0, 1799},
        Row{r, "hourlyUpdateCheck", End::beside, false, 0, 1800},
        Row{r, "hourlyUpdateCheck", End::beside, false, 0, 10799},
        Row{r, "hourlyUpdateCheck", End::alone, true, 11, 10800},
        Row{r, "appInstallRun:slides", End::left, false, 0, 1799},
        Row{r, "appInstallRun:slides", End::alone, true, 11, 1800}));

TEST_F(CoordinationTest, SaysWhatItWaitsFor) {
  vorlu.modes.installMode = true;
  add({});
  setType("appInstallRun:slides-server");
  mac.clock.at(2, [this] { setType("scheduledUpdateInitTest"); });
  coordinate();
  EXPECT_THAT(shown(),
              Contains("An install for Slides is already running. The requested Notes will be queued until the "
                       "Slides install is complete. Please wait..."));
}

TEST_F(CoordinationTest, QueuesBehindThoseBeforeItAlone) {
  vorlu.modes.installMode = true;
  for (const Other& other : {Other{.pid = 4711}, {.pid = 3990, .age = 0}, {.pid = 4001, .age = 0}})
    add(other);  // the last one comes after this agent
  endAt(92, 4711), endAt(130, 3990);
  EXPECT_EQ(coordinate(), End::alone);
  EXPECT_EQ(waited(), 95 + 30 + 10);
  EXPECT_THAT(kills(), IsEmpty());
  EXPECT_THAT(shown(),
              ElementsAre("Other Vorlu instances are running. The App install request has been queued. Please wait...",
                          "Install request is next in the queue. Please wait...", HasSubstr("(3990) is initialising")));
}

TEST_F(CoordinationTest, QueuesForTwentyMinutesAtMost) {
  add({}), add({.pid = 4712});
  vorlu.modes.selfServiceMode = true;
  EXPECT_EQ(coordinate(), End::left);
  EXPECT_EQ(waited(), 1200);
  EXPECT_THAT(shown(), ElementsAre("Other Vorlu instances are running. The update request has been queued. Please "
                                   "wait...",
                                   testing::StartsWith("Warning: "), "Exiting..."));
  vorlu.modes = {};
  vorlu.modes.runMode = true;
  EXPECT_EQ(coordinate(), End::left);
  EXPECT_THAT(shown(), ElementsAre("Other previously queued Vorlu instances are still running. Exiting..."));
  EXPECT_EQ(waited(), 1200);
  add({.pid = 4713, .age = 12000}), setType("forcedUpdate");
  EXPECT_EQ(coordinate(), End::left);  // the one that is stuck is ended before the others are counted
  EXPECT_THAT(kills(), ElementsAre("kill -15 4713"));
  EXPECT_EQ(readRunType(vorlu), "forcedUpdate");  // it may be one of the others'
}

TEST_F(CoordinationTest, WhatIsNoAgentCountsForNothing) {
  vorlu.modes.updateMode = true;
  // the shell that runs this agent, and its own
  add({.pid = 3999, .program = "vorlu", .parent = 3900});
  add({.pid = 3900, .age = 60});
  add({.pid = 4711, .user = "alice"});
  add({.pid = 4712, .program = "/opt/tools/vorlu"});
  add({.pid = 4713, .program = "/bin/zsh", .line = "zsh -c vorlu -u selfService"});
  EXPECT_EQ(coordinate(), End::alone);
  vorlu.modes.letGoOn = false;
  add({.pid = 4720, .program = "moskupdate", .line = "moskupdate -u selfService"});
  add({.pid = 4721, .line = "vorlu -u selfService"});
  vorlu.modes = {};
  vorlu.modes.runMode = true;
  shown();
  EXPECT_EQ(coordinate(), End::left);  // two: each counted once
  EXPECT_THAT(shown(), ElementsAre("Found external duplicate Vorlu process: moskupdate -u selfService",
                                   "Found external duplicate Vorlu process: vorlu -u selfService",
                                   "Other previously queued Vorlu instances are still running. Exiting..."));
}

/// Lines of tools that aren't what they should be; the one agent among them is found all the same.
TEST_F(CoordinationTest, LinesThatAreNoProcessesCountForNothing) {
  mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "\nnobody\n99999999999\n4000\n4711\n4712\n4713\n"});
  mac.processes.on(table, {.output = "\n  \n4711\n4711 1 root\n4711 1 root 05:00\n-4711 1 root 05:00 vorlu\n"
                                     "4711 1 root now vorlu\n4711x 1 root 05:00 vorlu\n4711 x root 05:00 vorlu\n"
                                     "4000 4000 root 00:10 vorlu\n 4712 1 root 1-05:00:00  vorlu \n"});
  mac.processes.on("/bin/ps -Aww -o pid= -o command=",
                   {.output = "\nx vorlu -u selfService\n4714 sudo vorlu -u selfService\n4715 (vorlu -u selfService)\n"
                              "4716 [vorlu -u selfService]\n4000 vorlu -u selfService\n"});
  readProcessTable(vorlu), findDuplicates(vorlu);  // answers of the Mac as it is
  const Duplicates found = findDuplicates(vorlu);
  EXPECT_TRUE(found.searched) << found.error;
  ASSERT_EQ(found.ahead.size(), 1U);
  EXPECT_EQ(found.ahead[0].pid, 4712);
  EXPECT_EQ(found.ahead[0].age, 104400);
  EXPECT_TRUE(found.behind.empty() && found.above.empty());
  for (const Answer& answer : {Answer{.status = 1}, {.timedOut = true}, {.starts = false}})
    mac.processes.on(table, answer);
  readProcessTable(vorlu);  // the last whole one
  for (int times = 0; times < 3; ++times) EXPECT_FALSE(findDuplicatesByName(vorlu).searched) << times;
}

TEST_F(CoordinationTest, EndsTheAgentAndItsPromptsAndNobodyElse) {
  vorlu.modes.installMode = true;
  setType("hourlyUpdateCheck");
  add({}, true);
  add({.pid = 4800, .program = "/usr/bin/su", .parent = 4711});
  add({.pid = 4801, .program = paths::dialogProgram, .user = "alice", .parent = 4800});
  add({.pid = 4802, .program = paths::dialogProgram, .user = "alice"});
  EXPECT_EQ(coordinate(), End::alone);
  EXPECT_THAT(kills(), ElementsAre("kill -15 4711", "kill -15 4801", "kill -9 4711"));
  EXPECT_EQ(waited(), 61);
  mac.processes.on("/bin/ps -Aww -o pid= -o command=", {.status = 1}), readCommandLines(vorlu);
  vorlu.modes.letGoOn = false;
  EXPECT_EQ(coordinate(), End::failed);
}

TEST_F(CoordinationTest, LeavesAProcessThatTookOverTheIdAlone) {
  vorlu.modes.installMode = true;
  add({.age = 3000});
  // gone between the last look and the signal: the id belongs to a younger process, another agent even
  mac.clock.at(300.5, [this] { others[1].age = -300; });
  EXPECT_EQ(coordinate(), End::alone);
  EXPECT_THAT(kills(), IsEmpty());
}

/// A shell that becomes an agent lends it its age: agents that came meanwhile may work already.
TEST_F(CoordinationTest, AnOldShellDoesNotPushAhead) {
  vorlu.modes.installMode = true;
  add({.age = 5});
  others[0].age = 8;
  mac.clock.advance(2);  // its run is two seconds old, the process ten
  mac.clock.at(4, [this] { setType("appInstallRun:slides"); });
  endAt(60, 4711);
  EXPECT_EQ(coordinate(), End::alone);
  EXPECT_GE(waited(), 60);
  EXPECT_THAT(kills(), IsEmpty());
}

TEST(ElapsedTime, IsReadInAllItsForms) {
  for (const auto& [text, seconds] : {std::pair("29:59", 1799), {"03:00:00", 10800}, {"2-01:00:01", 176401}})
    EXPECT_EQ(parseElapsed(text), seconds) << text;
  for (const char* text : {"", "12", "1:60", "a:b", "1-02:03", "-1:00", "1:2:3:4", "9:9:9:9:9:9:9:9:9:9:9:9:9:9"})
    EXPECT_EQ(parseElapsed(text), std::nullopt) << text;
}

}  // namespace
}  // namespace vorlu::test
