#include "ctl/explain_app.h"

#include <fmt/format.h>

#include <algorithm>

#include "ctl/app_look.h"
#include "ctl/forced_look.h"
#include "ctl/read_only_mac.h"
#include "ctl/schedule_steps.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/detection/find_app.h"
#include "vorlu/detection/processor.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/reporting/report_lists.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/preferences_path.h"
#include "vorlu/state/run_type.h"
#include "vorlu/vorlu.h"

namespace vorlu::ctl {
namespace {

/// One explanation under way.
struct Explaining {
  ReadOnlyMac& mac;
  Vorlu& vorlu;
  Explanation result = {};

  void add(const Steps& steps) { result.steps.insert(result.steps.end(), steps.begin(), steps.end()); }
  /// Adds a step; true when it lets the update through.
  bool pass(ExplainedStep step) {
    result.steps.push_back(std::move(step));
    return result.steps.back().verdict != stops;
  }
};

Status loadCatalog(Vorlu& vorlu) {
  auto text = vorlu.platform.files.read(paths::offlineData);
  if (!text) return text.failure();
  auto entries = decodeJson<std::vector<AppBlueprints>>(std::move(*text));
  if (!entries) return Failure{fmt::format("{}: {}", paths::offlineData, entries.error())};
  if (entries->empty()) return Failure{paths::offlineData + ": it holds no application"};
  vorlu.catalog.entries = std::move(*entries);
  return success();
}

/// Run data that root alone may read would be taken for that of a new Mac.
Status checkRunData(Vorlu& vorlu) {
  const auto bytes = vorlu.platform.files.read(paths::runData);
  return bytes || bytes.failure().code == ENOENT ? success() : Status(bytes.failure());
}

void tellOfSources(Explaining& at) {
  Vorlu& vorlu = at.vorlu;
  const auto prefs = preferencesPath(vorlu.platform);
  at.result.steps.push_back({"preferences", tells, prefs.value_or(""),
                             prefs ? "read from the profile" : "there is no profile: all keys are at their default"});
  const auto catalog = vorlu.platform.files.info(paths::offlineData);
  if (catalog)
    at.result.steps.push_back({"catalog", tells, paths::offlineData,
                               fmt::format("{} applications, as fetched {}", vorlu.catalog.entries.size(),
                                           momentText(vorlu.platform.clock, catalog->modified / 1'000'000'000))});
  const std::string type = readRunType(vorlu);
  if (type != "N/A")
    at.result.steps.push_back({"agent", tells, paths::runData, fmt::format("a run is at work ({})", type)});
}

/// Whether a recurring run looks for updates at all; an app that isn't in use needs no more.
bool looksForUpdates(Explaining& at) {
  Vorlu& vorlu = at.vorlu;
  const GeneralOptionPrefs& prefs = vorlu.preferences.general();
  const std::int64_t next = vorlu.runData.kept(&RunDataFile::NextUpdateAttempt);
  const bool isDue = next < static_cast<std::int64_t>(vorlu.platform.clock.now());
  if (prefs.updatePrompts)
    return at.pass(decision("next look", true, "GeneralOptions.updatePrompts", "each recurring run looks for updates"));
  if (!prefs.hourlyCheck)
    return at.pass(decision("next look", false, "GeneralOptions.hourlyCheck, GeneralOptions.updatePrompts",
                            "recurring runs look for no updates: both keys are false"));
  return at.pass(decision(
      "next look", isDue, "NextUpdateAttempt",
      isDue ? "the hourly check is due" : "the hourly check is due " + momentText(vorlu.platform.clock, next)));
}

/// An app in use: whether its user is asked.
Fate fateOfScheduled(Explaining& at) {
  Vorlu& vorlu = at.vorlu;
  const bool mayAsk = vorlu.preferences.general().updatePrompts;
  bool open = at.pass(decision("prompts", mayAsk, "GeneralOptions.updatePrompts",
                               mayAsk ? "recurring runs ask the user" : "recurring runs don't ask the user"));
  open &= at.pass(decision("console", somebodyAtConsole(vorlu), "console user",
                           fmt::format("the console user is \"{}\"", vorlu.platform.consoleUser.name())));
  const Steps gates = timeGates(vorlu);
  at.add(gates);
  open &= firstStop(gates) == nullptr;
  open &= at.pass(acceptableUseStep(vorlu, acceptableUseKeys(vorlu.preferences.scheduled()), "ScheduledUpdates"));
  const PromptOutlook prompt = promptOutlook(vorlu);
  at.add({prompt.step});
  if (!open) return Fate::waits;
  switch (prompt.choice) {
    case PromptChoice::initial:
      return Fate::prompt;
    case PromptChoice::none:
      return Fate::update;
    default:
      return Fate::gracePrompt;
  }
}

/// When the user is asked at the earliest, by the stored state and the time alone.
void forecastPrompt(Explaining& at) {
  if (!at.vorlu.preferences.general().updatePrompts) return;
  const auto moment = nextOpenMoment(at.mac, at.vorlu.site);
  Clock& clock = at.vorlu.platform.clock;
  if (moment) at.result.nextPrompt = momentStamp(clock, *moment);
  at.result.steps.push_back(
      {"next prompt", tells, "", moment ? "at the earliest " + momentText(clock, *moment) : "none within five weeks"});
}

/// What the report tells of an attempt that failed.
void tellOfLastError(Explaining& at) {
  const auto errors = readErrorRecord(at.vorlu.platform.files).vorluErrors.value_or(std::vector<VorluErrors>{});
  const auto isAboutApp = [&](const VorluErrors& error) {
    return orEmpty(error.message).find(at.result.app) != std::string::npos;
  };
  const auto last = std::find_if(errors.rbegin(), errors.rend(), isAboutApp);
  if (last == errors.rend() || at.result.app.empty()) return;
  at.result.steps.push_back(
      {"last error", tells, paths::errors, fmt::format("{}: {}", orEmpty(last->timeStamp), *last->message)});
}

Fate fateOf(Explaining& at, const AppBlueprints& entry, bool runScripts) {
  const AppLook look = lookAt(at.vorlu, entry, runScripts);
  at.add(look.steps);
  tellOfLastError(at);
  const std::string& latest = effectiveLatestVersion(entry, processor(at.vorlu.platform.device));
  if (!latest.empty()) at.result.latestVersion = latest;
  if (look.found) at.result.installedVersion = look.found->installedVersion;
  if (look.hindrance && *look.hindrance != Fate::blocked) return *look.hindrance;
  const ForcedLook forced = lookAtForced(at.vorlu, entry, look);
  at.add(forced.steps);
  if (!look.isListed && !forced.fate) return Fate::notManaged;
  if (look.hindrance || (look.hasUnknownType && !look.inUse)) return Fate::blocked;
  if (forced.fate) return *forced.fate;
  if (!look.inUse) return looksForUpdates(at) ? Fate::update : Fate::waits;
  const Fate fate = fateOfScheduled(at);
  forecastPrompt(at);
  return fate;
}

/// The step that settled the fate; null when none held the update back. The lists count only where they decided: a mark
/// for a forced update goes past them.
const ExplainedStep* decisiveStop(const Explanation& result) {
  if (result.fate == Fate::update || result.fate == Fate::prompt || result.fate == Fate::gracePrompt) return nullptr;
  for (const ExplainedStep& step : result.steps)
    if (step.verdict == stops && (step.topic != listsTopic || result.fate == Fate::notManaged)) return &step;
  return nullptr;
}

std::string summaryOf(Fate fate, const std::string& why) {
  switch (fate) {
    case Fate::notInCatalog:
      return "The catalog has no such application.";
    case Fate::notManaged:
      return fmt::format("It is not updated: {}.", why);
    case Fate::notInstalled:
      return "It is not installed, so there is nothing to update.";
    case Fate::unknown:
      return fmt::format("Whether it is due can't be told: {}.", why);
    case Fate::upToDate:
      return "It is up to date.";
    case Fate::blocked:
      return fmt::format("Its update would fail: {}.", why);
    case Fate::update:
      return "The next recurring run installs its update without a question.";
    case Fate::prompt:
      return "The next recurring run asks the user, who may defer.";
    case Fate::gracePrompt:
      return "The next recurring run tells the user, who has the grace period to save his work.";
    case Fate::waits:
      break;
  }
  return fmt::format("Its update waits: {}.", why);
}

Result<Explanation> explain(Explaining& at, const std::string& app, bool runScripts) {
  Vorlu& vorlu = at.vorlu;
  vorlu.modes.standing = Standing::beside;  // it looks for no other agents and writes no run type
  if (const Status loaded = loadCatalog(vorlu); !loaded) return loaded.failure();
  if (const Status readable = checkRunData(vorlu); !readable) return readable.failure();
  at.result.app = app;
  tellOfSources(at);
  buildAllowedLists(vorlu);
  if (const AppBlueprints* entry = matchApp(vorlu, app)) {
    at.result.app = orEmpty(entry->appName);
    at.result.identifier = entry->appIdentifier;
    if (runScripts) at.mac.processes.allow(prepareScript(orEmpty(entry->latestVersionScript)).text);
    at.result.fate = fateOf(at, *entry, runScripts);
  }
  const ExplainedStep* stop = decisiveStop(at.result);
  if (stop != nullptr) at.result.decidedBy = stop->decidedBy;
  at.result.summary = summaryOf(at.result.fate, stop != nullptr ? stop->detail : "");
  return std::move(at.result);
}

/// The explanation as JSON shows it.
struct Document {
  std::string app;
  std::optional<std::string> identifier;
  std::optional<std::string> installedVersion;
  std::optional<std::string> latestVersion;
  std::string verdict;
  std::string summary;
  std::optional<std::string> decidedBy;
  std::optional<std::string> nextPrompt;
  Steps steps;
  static constexpr auto fields() {
    using D = Document;
    return std::array{field<&D::app>("app"),
                      field<&D::identifier>("identifier"),
                      field<&D::installedVersion>("installedVersion"),
                      field<&D::latestVersion>("latestVersion"),
                      field<&D::verdict>("verdict"),
                      field<&D::summary>("summary"),
                      field<&D::decidedBy>("decidedBy"),
                      field<&D::nextPrompt>("nextPrompt"),
                      field<&D::steps>("steps")};
  }
};

}  // namespace

Result<Explanation> explainApp(Platform& mac, const Site& site, const std::string& app, bool runScripts) {
  ReadOnlyMac readOnly(mac);
  Vorlu vorlu(readOnly.platform(), site);
  Explaining at{readOnly, vorlu};
  try {
    return explain(at, app, runScripts);
  } catch (const RunEnded& ended) {
    return Failure{fmt::format("the agent itself would stop here with status {}", ended.status)};
  }
}

std::string toText(const Explanation& explanation) {
  const std::string identifier = explanation.identifier ? fmt::format(" ({})", *explanation.identifier) : "";
  return fmt::format("{}{}\n{}\n\n{}", explanation.app, identifier, explanation.summary, stepsText(explanation.steps));
}

std::string toJson(const Explanation& e) {
  return encodeJson(Document{e.app, e.identifier, e.installedVersion, e.latestVersion, nameOf(e.fate), e.summary,
                             e.decidedBy, e.nextPrompt, e.steps},
                    JsonLayout::pretty) +
         "\n";
}

}  // namespace vorlu::ctl
