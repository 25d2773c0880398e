#include "ctl/explained_step.h"

#include <fmt/format.h>

#include <algorithm>

namespace vorlu::ctl {

const ExplainedStep* firstStop(const Steps& steps) {
  const auto found = std::ranges::find(steps, std::string(stops), &ExplainedStep::verdict);
  return found == steps.end() ? nullptr : &*found;
}

std::string stepsText(const Steps& steps) {
  std::size_t width = 0;
  for (const ExplainedStep& step : steps) width = std::max(width, step.topic.size());
  std::string text;
  for (const ExplainedStep& step : steps) {
    const char* mark = step.verdict == stops ? "STOP" : step.verdict == passes ? "ok" : "-";
    text += fmt::format("  {:<4}  {:<{}}  {}", mark, step.topic, width, step.detail);
    text += step.decidedBy.empty() ? "\n" : fmt::format("  [{}]\n", step.decidedBy);
  }
  return text;
}

std::string momentText(Clock& clock, std::int64_t moment) {
  return moment == 0 ? "never" : clock.format(static_cast<Seconds>(moment), "EEE yyyy-MM-dd HH:mm");
}

std::optional<std::string> momentStamp(Clock& clock, std::int64_t moment) {
  if (moment == 0) return std::nullopt;
  return clock.format(static_cast<Seconds>(moment), "yyyy-MM-dd'T'HH:mm:ssXXX");
}

}  // namespace vorlu::ctl
