#include "ctl/timeline_command.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "ctl/explained_step.h"
#include "ctl/lint/preferences_payload.h"
#include "ctl/rehearsal_mac.h"
#include "ctl/timeline.h"
#include "vorlu/state/json.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/site.h"

namespace vorlu::ctl {
namespace {

constexpr int longest = 366;  ///< days

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": it can't be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

UserAnswer answerOf(const std::string& word) {
  if (const auto answer = userAnswer(word)) return *answer;
  throw std::invalid_argument(fmt::format("--answers: \"{}\" is none of update, defer, ignore and quit", word));
}

std::vector<UserAnswer> answersOf(const std::string& text) {
  std::vector<UserAnswer> answers;
  std::istringstream words(text);
  for (std::string word; std::getline(words, word, ',');) answers.push_back(answerOf(word));
  if (answers.empty()) throw std::invalid_argument("--answers: no answer is given");
  return answers;
}

int numberOf(const char* option, const std::string& text, int lowest, int highest) {
  int number = 0;
  int length = 0;
  const bool isNumber =
      std::sscanf(text.c_str(), "%9d%n", &number, &length) == 1 && static_cast<std::size_t>(length) == text.size();
  if (!isNumber || number < lowest || number > highest)
    throw std::invalid_argument(fmt::format("{}: \"{}\" is no number from {} to {}", option, text, lowest, highest));
  return number;
}

void setHours(RehearsalPlan& plan, const std::string& text) {
  int fromHour = 0, fromMinute = 0, toHour = 0, toMinute = 0, length = 0;
  const int read = std::sscanf(text.c_str(), "%2d:%2d-%2d:%2d%n", &fromHour, &fromMinute, &toHour, &toMinute, &length);
  plan.fromMinute = fromHour * 60 + fromMinute;
  plan.toMinute = toHour * 60 + toMinute;
  const bool isTime =
      fromHour >= 0 && fromMinute >= 0 && fromMinute < 60 && toHour < 24 && toMinute >= 0 && toMinute < 60;
  if (read != 4 || static_cast<std::size_t>(length) != text.size() || !isTime)
    throw std::invalid_argument(fmt::format("--hours: \"{}\" is no time of a day such as 09:00-17:00", text));
  if (plan.fromMinute >= plan.toMinute)
    throw std::invalid_argument(fmt::format("--hours: \"{}\" ends before it begins", text));
}

std::int64_t startOf(const std::optional<std::string>& text) {
  RehearsalClock clock("");
  if (!text) return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()) / 900 * 900;
  const auto moment = parseMoment(clock, *text);
  if (!moment) throw std::invalid_argument(fmt::format("--start: \"{}\" is no moment such as 2026-11-23 09:00", *text));
  return *moment;
}

RehearsalPlan planOf(Arguments& arguments) {
  RehearsalPlan plan;
  const auto prefs = takeOption(arguments, "--prefs");
  if (!prefs) throw std::invalid_argument("name the profile with --prefs FILE");
  plan.preferences = deliveredList(readFile(*prefs));
  if (const auto days = takeOption(arguments, "--days")) plan.days = numberOf("--days", *days, 1, longest);
  if (const auto answers = takeOption(arguments, "--answers")) plan.answers = answersOf(*answers);
  if (const auto hours = takeOption(arguments, "--hours")) setHours(plan, *hours);
  if (const auto every = takeOption(arguments, "--release-every"))
    plan.releaseEvery = numberOf("--release-every", *every, 0, longest);
  plan.start = startOf(takeOption(arguments, "--start"));
  if (!arguments.empty()) throw std::invalid_argument(fmt::format("\"{}\" is no option", arguments[0]));
  return plan;
}

/// The sections of a profile, each of which may be missing.
struct Sections {
  std::optional<GeneralOptionPrefs> general;
  std::optional<ScheduledUpdatesPrefs> scheduled;
  std::optional<ForcedUpdatesPrefs> forced;
  static constexpr auto fields() {
    return std::array{field<&Sections::general>("GeneralOptions"), field<&Sections::scheduled>("ScheduledUpdates"),
                      field<&Sections::forced>("ForcedUpdates")};
  }
};

/// A file that is no profile of the agent would pass for one with all keys at their default.
std::string warningAbout(const RehearsalPlan& plan) {
  const auto sections = decodePropertyList<Sections>(plan.preferences);
  const bool hasAny = sections && (sections->general || sections->scheduled || sections->forced);
  return hasAny ? "" : "The file has none of the agent's sections: all keys are at their default.\n";
}

std::string daysText(int days) {
  return days == 1 ? "1 day" : fmt::format("{} days", days);
}

std::string clockText(int minute) {
  return fmt::format("{:02}:{:02}", minute / 60, minute % 60);
}

std::string toText(const RehearsalPlan& plan, const std::vector<TimelineEntry>& entries) {
  RehearsalClock clock("");
  std::string text = warningAbout(plan);
  text += fmt::format(
      "{} from {}: the Mac is in use from {} to {}, an outdated application is always open, {}.\n\n",
      daysText(plan.days), momentText(clock, plan.start), clockText(plan.fromMinute), clockText(plan.toMinute),
      plan.releaseEvery == 0 ? std::string("one new version comes out")
                             : fmt::format("a new version comes out every {}",
                                           plan.releaseEvery == 1 ? "day" : daysText(plan.releaseEvery)));
  for (const TimelineEntry& entry : entries)
    text += fmt::format("{}  {:<9} {}\n", entry.time, entry.event, entry.detail);
  return text;
}

}  // namespace

std::optional<std::int64_t> parseMoment(Clock& clock, const std::string& text) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, length = 0;
  const int read = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d%n", &year, &month, &day, &hour, &minute, &length);
  if (read != 5 || static_cast<std::size_t>(length) != text.size()) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59) return std::nullopt;
  auto noon =
      static_cast<Seconds>(std::chrono::sys_seconds(std::chrono::sys_days(date)).time_since_epoch().count() + 43200);
  if (clock.fields(noon, Zone::local).day != day) noon -= 43200;  // far in the east
  const auto moment = clock.hourOfDay(noon, hour, Zone::local);
  return moment ? std::optional(static_cast<std::int64_t>(*moment) + std::int64_t{minute} * 60) : std::nullopt;
}

Answer timelineCommand(const Arguments& given) {
  Arguments arguments = given;
  const bool asJson = takeFlag(arguments, "--json");
  const RehearsalPlan plan = planOf(arguments);
  LinuxSecurity security;
  const Site site(sealedSite, security);
  const auto entries = rehearse(plan, site);
  if (!entries)
    return {2, fmt::format("vorluctl timeline: the profile can't be decoded: {}; vorluctl lint-prefs names the place\n",
                           entries.error())};
  return {0, asJson ? encodeJson(*entries, JsonLayout::pretty) + "\n" : toText(plan, *entries)};
}

}  // namespace vorlu::ctl
