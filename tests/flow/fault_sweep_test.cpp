#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <regex>

#include "faults/faulty_files.h"
#include "faults/faulty_platform.h"
#include "faults/faulty_processes.h"
#include "faults/faulty_urls.h"
#include "tests/support/scripted_user.h"
#include "tests/unit/install/install_run.h"
#include "tests/unit/server/server_fixture.h"
#include "vorlu/cli/entry.h"
#include "vorlu/platform/linux/linux_processes.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/error_record.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/replacement.h"

// What counts in a coverage build (scripts/coverage), and nowhere else.
extern "C" {
[[gnu::weak]] void __llvm_profile_reset_counters();
[[gnu::weak]] int __llvm_profile_write_file();
}

namespace vorlu::test {
namespace {

namespace fs = std::filesystem;
using namespace faults;

/// One command of the agent on a Mac with an outdated application.
struct Scenario {
  const char* name;
  Strings command;
  const char* type = "zip";     ///< of the application's download
  bool open = false;            ///< whether its user works with it
  const char* answers = "";     ///< the user's
  bool mayBeUpdated = true;     ///< otherwise he keeps it as it is
  const char* prepared = "-c";  ///< first argument of an earlier run, empty on a Mac that is new to the agent
};

const Scenario scenarios[] = {
    {"checkArchive", {"-u", "check"}},
    {"checkImage", {"-u", "check"}, "dmg"},
    {"checkPackage", {"-u", "check"}, "pkg"},
    {"checkInUse", {"-u", "check"}, "zip", true, "", false},
    {"deferred", {"-u", "prompt"}, "zip", true, "2", false},
    {"agreed", {"-u", "prompt"}, "zip", true, "0"},
    {"forced", {"-u", "force"}, "dmg", true, "0"},
    {"installed", {"-i", "id.Fresh"}, "zip", true, "", false},
    {"report", {"-r", "submit"}, "zip", false, "", false},
    {"newMac", {"-u", "run"}, "zip", false, "", true, ""},
};

const std::string deferCount = "5";  // more than are given anew
const std::string slides = "/Applications/Slides.app";
const std::string fresh = "/Applications/Fresh.app";

struct FaultSweep : ServerFixture, testing::WithParamInterface<Scenario> {
  FaultSweep() : user(mac) {
    serveInventory(fmt::format(
        R"({{"label": "live_blueprints", "url": "{0}/catalog/live", "token": "t"}},
           {{"label": "reports", "url": "{0}/reports", "token": "t"}},
           {{"label": "SelfUpdatesNew", "url": "{0}/manifest", "token": "t"}})",
        base));
    serve("manifest.json", fmt::format(R"x([{{"componentName": "Dialog", "downloadURL": "{}/files/Dialog.pkg",
                                          "codeSigning": "Example Corp (EXMPL12345)", "latestVersion": "1.0.0"}}])x",
                                       base));
    serve("files/Dialog.pkg", "Dialog");
    serve("catalog.json",
          encodeJson(std::vector{entryOf("Slides", GetParam().type), entryOf("Fresh", "zip")}, JsonLayout::compact));
    mac.files.freeDisk = 200'000'000'000;
    scriptTools();
    arrange();
  }

  AppBlueprints entryOf(const std::string& name, const std::string& type) {
    const std::string archive = type == "zip" ? appArchive(name + ".app", "2.0") : name;
    serve("files/" + name, archive);
    AppBlueprints entry;
    entry.appName = name;
    entry.appIdentifier = "id." + name;
    entry.serverName = "server." + name;
    entry.latestVersion = "2.0";
    entry.latestVersionMethod = "CFBundleShortVersionString";
    entry.appType = "appBundle";
    entry.architecture = "universal";
    entry.verifySignature = false;
    entry.downloadFileType = type;
    entry.universalDownloadURL = base + "/files/" + name;
    entry.universalInstallerHash = hexEncode(mac.security.sha256(archive));
    entry.appPath = "/Applications/" + name + ".app";
    entry.sourceItems = Strings{name + ".app"};
    entry.destinationPath = "/Applications";
    entry.owner = entry.group = "";
    return entry;
  }

  void scriptTools() {
    ScriptedProcesses& tools = mac.processes;
    tools.onPrefix("/", {});
    tools.passThrough("/usr/bin/tar", "/usr/bin/bsdtar", paths::run, mac.root());
    tools.onPrefix("/usr/bin/hdiutil attach", {.output = "/dev/disk4\t/Volumes/Image\n", .effect = [this](const auto&) {
                                                 mac.addApplication("/Volumes/Image/Slides.app", "com.example.Slides",
                                                                    "2.0");
                                               }});
    tools.onPrefix("/usr/bin/hdiutil detach",
                   {.effect = [this](const auto&) { fs::remove_all(mac.root() + "/Volumes/Image"); }});
    tools.onPrefix("/usr/sbin/pkgutil", {.output = "   1. Developer ID Installer: Example Corp (EXMPL12345)\n"});
    tools.onPrefix("/usr/sbin/installer", {.effect = [this](const Command& command) {
                     const bool component = commandLine(command).find("Components") != std::string::npos;
                     component ? addDialog() : mac.addApplication(slides, "com.example.Slides", "2.0");
                   }});
  }
  void addDialog() {
    mac.addApplication(paths::dialogBundle, "dialog", "1.0.0");
    mac.write(paths::promptComponentReceipt, plistOf("<key>PackageVersion</key><string>1.0.0</string>"));
  }

  void arrange() {
    const Scenario& scenario = GetParam();
    mac.addApplication(slides, "com.example.Slides", "1.0");
    mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
              plistOf(fmt::format("<key>GeneralOptions</key><dict><key>publicKey</key><string>{}</string></dict>",
                                  base64Encode(agentKeys().agent.publicDer()))));
    fs::remove_all(mac.root() + paths::support);
    if (*scenario.prepared == '\0') return keepTemplate();
    addDialog();
    EXPECT_EQ(inChild({}, [&](auto& vorlu) { return runVorlu(vorlu, {scenario.prepared, "id.Slides"}); }), 0);
    EXPECT_EQ(inChild({}, [&](auto& vorlu) { return ensureRunData(vorlu), 0; }), 0);
    RunDataFile file = runData();
    std::tie(file.DeferCount, file.UserDeferred) = std::tuple(deferCount, true);
    file.SecretsTimestamp = 1000000000;  // newer than the server's
    setRunData(file);
    if (scenario.name == std::string("forced"))
      mac.write(forcedReceiptPath("id.Slides"), plistOf("<key>deferrals</key><string>1</string>"));
    keepTemplate();
  }

  void copyMac(const std::string& from, const std::string& to) {
    for (const auto& entry : fs::directory_iterator(to)) fs::remove_all(entry);
    EXPECT_EQ(LinuxProcesses().run(commandOf("/bin/cp", {"-a", from + "/.", to})).status, 0);
  }
  void keepTemplate() { copyMac(mac.root(), start.path()); }

  /// Does it in a process of its own, as a fresh run; its status, or 128 and the signal that ended it.
  template <class Work>
  int inChild(std::optional<std::pair<Fault, int>> point, Work work) {
    std::cout.flush();
    plan.arm(point);
    const pid_t child = ::fork();
    if (child == 0) {
      ::alarm(60);
      if (__llvm_profile_reset_counters != nullptr) __llvm_profile_reset_counters();
      FaultyFiles files(mac.files, plan);
      FaultyProcesses processes(mac.processes, plan);
      FaultyUrls urls(mac.urls, plan);
      LinuxKeychain keychain(files, RootFolder(mac.root()));
      Platform platform = faultyPlatform(mac.platform(), files, processes, urls, keychain);
      const SealedSite view = sealed.view();
      const Site site(view, mac.security);
      Vorlu vorlu(platform, site);
      const int status = work(vorlu);
      if (__llvm_profile_write_file != nullptr) __llvm_profile_write_file();
      ::_exit(status);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  }

  /// The scenario's command; what the process alone can see is noted as wrong.
  int runAgent(std::optional<std::pair<Fault, int>> point, Seconds later = 0, const Scenario& scenario = GetParam()) {
    mac.clock.set(VirtualClock::defaultStart + later);  // the server's as well
    return inChild(point, [&](Vorlu& vorlu) {
      if (GetParam().open) user.open("Slides");
      user.willAnswer(scenario.answers);
      const int status = runVorlu(vorlu, scenario.command);
      if (const std::string wrong = wrongAtTheEnd(); !wrong.empty()) plan.seen().note(plan.seen().wrong, wrong);
      if (std::getenv("VORLU_FAULT_LOG") != nullptr)
        for (const std::string& line : mac.console.lines()) std::cout << "  " << line << std::endl;
      return status;
    });
  }

  std::string wrongAtTheEnd() {
    const std::string seen = user.seen(), struck = plan.seen().struck;
    const bool wasQuit = GetParam().open && user.running.empty();
    for (const std::string& line : mac.systemLog.lines())
      if (line.find("unexpected fault") != std::string::npos) return line;
    if (wasQuit && !GetParam().mayBeUpdated) return "the app was quit without consent";
    if (wasQuit && seen.find("relaunch") == std::string::npos && struck.find("zsh -c su") == std::string::npos &&
        struck.find("pgrep -x Slides") == std::string::npos)
      return "the app was not opened again";
    const std::string commands = mac.read(paths::dialogCommandFile);
    if (seen.find("window") != std::string::npos && !commands.ends_with("quit:\n") &&
        struck.find(paths::dialogCommandFile) == std::string::npos && !plan.lastsOn())
      return "the window was left";
    return mac.power.held.empty() ? "" : "the Mac is kept awake";
  }

  /// All that lies on the Mac, less what tells of time and faults. A half-written file stays for a day, and the
  /// installer of an app that is there until the next check.
  std::string facts() {
    static const std::regex free(
        "/private/var/(log|tmp)/.*|.*/(Errors|lastReport(Enc)?|networkQuality)\\.json|.*/Logs(/"
        ".*)?|.*\\.UI\\.log|.*\\.corrupt|"
        ".*/completeResult|.*/\\.vorlu-.*|.*/Downloads/Fresh-.*");
    static const std::regex moving(
        "<integer>[0-9]{9,}<|<string>[^<]* 20[0-9]{2}[^<]*<|\"[^\"]* 20[0-9]{2}[^\"]*\"|"
        "<key>(LastRun|LastCompliant|DeferCount|UserDeferred)</key>\\s*<[^<]*<|\"value\": \"[^\"]+\"");
    static const std::regex passing(
        "\\s*<key>LastServerTimestamp</key>\\s*<integer>[0-9]+</integer>|\"updateCached\" : [a-z]+");
    std::set<std::string> items;
    for (const auto& entry : fs::recursive_directory_iterator(mac.root())) {
      const std::string path = entry.path().string().substr(mac.root().size());
      if (std::regex_match(path, free)) continue;
      const bool isFile = entry.is_regular_file() && !entry.is_symlink();
      const std::string text = isFile ? readFile(entry.path()) : "";
      items.insert(fmt::format("{} {:o} {}", path, modeOf(entry, path),
                               std::regex_replace(std::regex_replace(text, passing, ""), moving, "*")));
    }
    return fmt::format("{}\n", fmt::join(items, "\n"));
  }
  /// A refused mode is logged and leaves the app whole.
  static unsigned modeOf(const fs::directory_entry& entry, const std::string& path) {
    return path.starts_with("/Applications/") ? 0 : static_cast<unsigned>(entry.symlink_status().permissions());
  }
  std::string versionOf(const std::string& app) {
    std::string all;
    if (!fs::exists(mac.root() + app)) return "none";
    for (const auto& entry : fs::recursive_directory_iterator(mac.root() + app))
      if (!entry.is_directory()) all += readFile(entry.path());
    return all;
  }

  /// Whether the computer's own deferrals are at stake; they may be spent or, in doubt, given anew.
  static bool isPrompted() { return std::string("deferred agreed newMac").find(GetParam().name) != std::string::npos; }

  /// What no fault may do to the files, told right after it.
  std::string wrongOnDisk(bool killed) {
    const std::string struck = plan.seen().struck, wrong = plan.seen().wrong;
    if (!wrong.empty()) return wrong;
    const std::string version = versionOf(slides);
    if (version != oldSlides && (version != newSlides || !GetParam().mayBeUpdated)) return "Slides is " + version;
    if (const std::string now = versionOf(fresh); now != "none" && now != newFresh) return "Fresh is " + now;
    if (mac.exists(paths::runData) && !loadRunData(mac.files)) return "run data";
    if (!isPrompted() && mac.exists(paths::runData) && runData().DeferCount != deferCount)
      return "the user's deferrals";
    if (const std::string text = mac.read(paths::errors); !text.empty() && !decodeJson<ErrorStruct>(text))
      return "Errors.json: " + text;
    const std::string receipt = mac.read(forcedReceiptPath("id.Slides"));
    if (!receipt.empty() && !decodePropertyList<RunDataFile>(receipt)) return "the forced receipt: " + receipt;
    const bool hinders = plan.lastsOn() || std::regex_search(struck, std::regex("^changing|detach|/\\.~"));
    if (killed || hinders) return "";
    for (const auto& entry : fs::recursive_directory_iterator(mac.root()))
      if (const std::string path = entry.path(); path.find("/.vorlu-") != std::string::npos ||
                                                 path.find("/.~") != std::string::npos ||
                                                 path.find("/Volumes/Image") != std::string::npos)
        return "left behind: " + path;
    return "";
  }

  /// Meets one fault, then runs again without any.
  std::string outcomeOf(std::pair<Fault, int> point) {
    copyMac(start.path(), mac.root());
    const int status = runAgent(point);
    const bool killed = point.first == Fault::killedBefore || point.first == Fault::killedAfter;
    const std::string struck = plan.seen().struck;
    if (struck.empty()) return ++unstruck, status == 0 ? "" : fmt::format("no fault, but {}", status);
    if (killed ? status != 128 + SIGKILL : status != 0 && status != 1) return fmt::format("ended with {}", status);
    if (const std::string wrong = wrongOnDisk(killed); !wrong.empty()) return fmt::format("{}: {}", struck, wrong);
    const int again = runAgent({}, 7200);
    if (again != 0 && again != secondStatus) return fmt::format("{}: the next run ends with {}", struck, again);
    const bool isDeferral = !killed && struck.find("--button2text") != std::string::npos;  // nobody has agreed
    const bool keepsDownload = std::regex_search(struck, std::regex("^changing .*/Downloads/")) && !isGood(facts());
    if (keepsDownload) runAgent({}, 14400, checking());
    const std::string after = facts();
    if (isDeferral ? after == deferred : keepsDownload ? after == checked : isGood(after)) return "";
    return fmt::format("{}: the next run doesn't make it good:\n{}", struck,
                       difference(after, isDeferral      ? deferred
                                         : keepsDownload ? checked
                                                         : good[0]));
  }
  bool isGood(const std::string& is) const { return std::find(good.begin(), good.end(), is) != good.end(); }
  static Scenario checking() {
    Scenario scenario = GetParam();
    scenario.command = {"-u", "check"};
    return scenario;
  }
  static Scenario deferring() {
    Scenario scenario = GetParam();
    scenario.answers = "2";
    return scenario;
  }
  std::string difference(const std::string& is, const std::string& shouldBe) {
    writeFile(notes / "/is", is), writeFile(notes / "/should-be", shouldBe);
    return LinuxProcesses().run(commandOf("/usr/bin/diff", {"-a", notes / "/should-be", notes / "/is"})).output;
  }

  ScriptedUser user;
  FaultPlan plan;
  TemporaryFolder start;  ///< the Mac before the run
  TemporaryFolder notes;
  std::vector<std::string> good;  ///< the Mac after one run without fault, and after two
  std::string checked;            ///< the same after a check for updates
  std::string deferred;           ///< the Mac after a run in which the user defers, and one more
  std::string oldSlides, newSlides, newFresh;
  int secondStatus = 0;      ///< with which a run ends after a good one
  std::size_t unstruck = 0;  ///< runs that ended before their point
};

TEST_P(FaultSweep, LosesNothingAtAnyCall) {
  oldSlides = versionOf(slides);
  ASSERT_EQ(runAgent({}), 0);
  const FaultPlan::Seen clean = plan.seen();
  EXPECT_STREQ(clean.wrong, "");
  newSlides = versionOf(slides), newFresh = versionOf(fresh);
  EXPECT_EQ(newSlides != oldSlides, GetParam().mayBeUpdated);
  good.push_back(facts());
  secondStatus = runAgent({}, 7200);
  good.push_back(facts());
  runAgent({}, 14400, checking());
  checked = facts();
  copyMac(start.path(), mac.root());
  runAgent({}, 0, deferring());
  runAgent({}, 7200);
  deferred = facts();

  std::vector<std::pair<Fault, int>> points;
  const char* wanted = std::getenv("VORLU_FAULTS");  // "all", a fault's name, or name:call
  for (const auto& [fault, name] : allFaults)
    for (int call = 1; call <= clean.calls; ++call)
      if (canMeet(clean.touches[call], fault) &&
          (!wanted || wanted == std::string("all") ||
           fmt::format("{}:{}:", name, call).starts_with(fmt::format("{}:", wanted))))
        points.emplace_back(fault, call);
  const std::size_t step = wanted ? 1 : points.size() / 12 + 1;
  int wrong = 0;
  std::size_t met = 0;
  for (std::size_t i = 0; i < points.size(); i += step, ++met) {
    const std::string outcome = outcomeOf(points[i]);
    if (outcome.empty() || ++wrong > 40) continue;
    ADD_FAILURE() << allFaults[static_cast<int>(points[i].first)].second << ":" << points[i].second << " " << outcome;
  }
  std::cout << fmt::format("{}: {} calls, {} of {} points, {} not reached, {} wrong\n", GetParam().name, clean.calls,
                           met - unstruck, points.size(), unstruck, wrong);
  EXPECT_LE(unstruck, 1 + met / 50) << "the faults don't come";
}

INSTANTIATE_TEST_SUITE_P(Each, FaultSweep, testing::ValuesIn(scenarios),
                         [](const auto& scenario) { return scenario.param.name; });

}  // namespace
}  // namespace vorlu::test
