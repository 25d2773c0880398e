#include "ctl/rehearsal_mac.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "vorlu/detection/download_cache.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/prompts/update_prompt.h"
#include "vorlu/state/encoding.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"

namespace vorlu::ctl {
namespace {

const std::string appName = "Example";
const std::string bundleIdentifier = "com.example.rehearsal";
const std::string bundle = "/Applications/" + appName + ".app";
constexpr std::string_view installer = "an installer";
constexpr pid_t appPid = 700;

bool holds(const std::string& line, std::string_view part) {
  return line.find(part) != std::string::npos;
}

struct InfoPlist {
  std::string CFBundleIdentifier;
  std::string CFBundleShortVersionString;
  static constexpr auto fields() {
    return std::array{field<&InfoPlist::CFBundleIdentifier>("CFBundleIdentifier"),
                      field<&InfoPlist::CFBundleShortVersionString>("CFBundleShortVersionString")};
  }
};

std::string throwAwayFolder() {
  std::string path = std::filesystem::temp_directory_path() / "vorluctl-XXXXXX";
  if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error(path + ": the folder can't be made");
  return path;
}

}  // namespace

Status RehearsalFiles::writeAtomically(const std::string& path, std::string_view data, const Ownership& /*ownership*/) {
  const std::string hostPath = root_.hostPath(path);
  std::error_code ignored;
  std::filesystem::remove(hostPath, ignored);  // a file that is cut to nothing would be synced when it is closed
  std::ofstream file(hostPath, std::ios::binary);
  file << data;
  return file.flush() ? success() : Status(Failure{path + ": it can't be written"});
}

/// A prompt on the screen: it stands until its user has answered it, or its timer has run out.
class RehearsalMac::Prompt : public RunningProcess {
 public:
  Prompt(RehearsalClock& clock, std::int64_t seconds, const char* code)
      : clock_(clock), end_(clock.now() + static_cast<Seconds>(seconds)), code_(code) {}
  bool isRunning() override { return clock_.now() < end_; }
  ProcessResult wait() override {
    clock_.moveTo(std::max(clock_.now(), end_));
    ProcessResult result;
    result.started = true;
    result.status = 0;
    result.output = fmt::format("{}\n", code_);
    return result;
  }

 private:
  RehearsalClock& clock_;
  Seconds end_;
  const char* code_;
};

/// The programs of the rehearsed Mac, by what the agent starts them for.
class RehearsalMac::Programs : public Processes {
 public:
  explicit Programs(RehearsalMac& mac) : mac_(mac) {}

  ProcessResult run(const Command& command) override { return start(command)->wait(); }
  std::unique_ptr<RunningProcess> start(const Command& command) override {
    if (command.program == "/usr/bin/pgrep") return ended(pidsOf(command.arguments.back()));
    if (command.program == "/usr/sbin/installer") install();
    const std::string line = command.arguments.empty() ? "" : command.arguments.back();
    if (holds(line, "--button2text")) return prompt(false);
    if (holds(line, paths::dialogProgram) && holds(line, "--timer")) return prompt(true);
    if (holds(line, "osascript") || holds(line, fmt::format("killall \"{}\"", appName))) mac_.isOpen_ = false;
    if (holds(line, "open -g -a")) mac_.isOpen_ = true;
    return ended("");
  }
  std::optional<pid_t> launch(const Command& command) override {
    // The closing prompt is acknowledged at once; a progress window needs no answer.
    if (holds(command.arguments.back(), paths::completeResult)) mac_.write(paths::completeResult, "0\n");
    return appPid + 1;
  }
  bool signal(pid_t /*pid*/, int /*signal*/) override { return false; }
  bool isAlive(pid_t /*pid*/) override { return false; }
  pid_t ownPid() override { return 4000; }
  pid_t parentPid() override { return 1; }
  std::string userName() override { return "root"; }

 private:
  static std::unique_ptr<RunningProcess> ended(std::string output) {
    struct Ended : RunningProcess {
      ProcessResult result;
      bool isRunning() override { return false; }
      ProcessResult wait() override { return result; }
    };
    auto process = std::make_unique<Ended>();
    process->result.started = true;
    process->result.status = 0;
    process->result.output = std::move(output);
    return process;
  }

  std::string pidsOf(const std::string& name) const {
    return name == appName && mac_.isOpen_ ? fmt::format("{}\n", appPid) : "";
  }

  void install() {
    mac_.installed_ = mac_.released_;
    mac_.writeApplication();
  }

  /// What the user does with a prompt, and how long it takes him.
  std::unique_ptr<RunningProcess> prompt(bool hasGrace) {
    const UserAnswer answer = mac_.nextAnswer();
    const ScheduledUpdatesPrefs& prefs = mac_.prefs_.ScheduledUpdates;
    const bool isLimited = deferralModeOf(prefs.deferralConfiguration.deferralOption) == DeferralMode::limited;
    const auto file = loadRunData(mac_.files_);
    const auto left = file && isLimited ? parseCount(file->DeferCount.value_or("")) : std::nullopt;
    mac_.seen_.push_back({static_cast<std::int64_t>(mac_.clock.now()), hasGrace, answer, left});
    const bool isLeftStanding = answer == UserAnswer::ignore || (hasGrace && answer == UserAnswer::defer);
    const std::int64_t timer =
        hasGrace ? usableGraceMinutes(prefs.gracePeriodMinutes) * 60 : usableRefreshInterval(prefs.refreshInterval);
    if (isLeftStanding) return std::make_unique<Prompt>(mac_.clock, timer, "4");
    const char* code = answer == UserAnswer::update ? "0" : answer == UserAnswer::defer ? "2" : "137";
    return std::make_unique<Prompt>(mac_.clock, mac_.plan_.answerSeconds, code);
  }

  RehearsalMac& mac_;
};

bool RehearsalMac::Applications::isRunning(const std::string& identifier) {
  return identifier == bundleIdentifier && mac_.isOpen_;
}

RehearsalMac::RehearsalMac(const RehearsalPlan& plan, const CustomPrefs& prefs)
    : clock(plan.zone),
      plan_(plan),
      prefs_(prefs),
      folder_(throwAwayFolder()),
      root_(folder_),
      programs_(std::make_unique<Programs>(*this)),
      platform_{clock,  files_,   *programs_, urls_,         security_,  keychain_, person_, hardware_,
                awake_, cameras_, focus_,     applications_, systemLog_, console_,  webView_},
      answers_(plan.answers.begin(), plan.answers.end()) {
  clock.moveTo(static_cast<Seconds>(plan.start));
  makeFolders();
  write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist", encodePropertyList(prefs));
  writeApplication();
  addToCatalog();
}

RehearsalMac::~RehearsalMac() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void RehearsalMac::makeFolders() {
  for (const std::string& folder : {paths::downloads, paths::output, paths::components, bundle + "/Contents/MacOS",
                                    std::string("/Library/Managed Preferences"), std::string("/var/db/receipts")})
    std::filesystem::create_directories(root_.hostPath(folder));
}

void RehearsalMac::write(const std::string& path, std::string_view text) {
  const Status written = files_.writeAtomically(path, text, {});
  if (!written) throw std::runtime_error(folder_ + written.error());
}

void RehearsalMac::writeApplication() {
  write(bundle + "/Contents/Info.plist", encodePropertyList(InfoPlist{bundleIdentifier, installedVersion()}));
  write(bundle + "/Contents/MacOS/" + appName, "");
}

void RehearsalMac::addToCatalog() {
  AppBlueprints entry;
  entry.appName = appName;
  entry.appIdentifier = "example";
  entry.serverName = "example";
  entry.latestVersion = releasedVersion();
  entry.latestVersionMethod = "CFBundleShortVersionString";
  entry.appType = "appBundle";
  entry.appPath = bundle;
  entry.architecture = "universal";
  entry.universalDownloadURL = "https://example.com/installer.pkg";
  entry.downloadFileType = "pkg";
  entry.verifySignature = false;
  entry.universalInstallerHash = hexEncode(security_.sha256(installer));
  catalog_ = {entry};
}

void RehearsalMac::release() {
  catalog_.front().latestVersion = versionOf(++released_);
  write(fmt::format("{}/{}.pkg", paths::downloads, cacheFileStem(appName, releasedVersion())), installer);
}

bool RehearsalMac::isUserThere() {
  const CalendarFields now = clock.fields(clock.now(), Zone::local);
  const int minute = now.hour * 60 + now.minute;
  return plan_.fromMinute <= minute && minute <= plan_.toMinute;
}

void RehearsalMac::beginRun() {
  answerOfRun_.reset();
  isOpen_ = true;
}

UserAnswer RehearsalMac::nextAnswer() {
  if (answerOfRun_) return *answerOfRun_;  // a prompt that came back
  answerOfRun_ = answers_.front();
  if (answers_.size() > 1) answers_.pop_front();
  return *answerOfRun_;
}

}  // namespace vorlu::ctl
