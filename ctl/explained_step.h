#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/platform/clock.h"
#include "vorlu/state/record.h"

namespace vorlu::ctl {

// What a step says of the way to an update.
inline constexpr const char* passes = "passes";
inline constexpr const char* stops = "stops";
inline constexpr const char* tells = "tells";  ///< decides nothing by itself

/// One thing that decides about an app, or that an administrator wants to know of it.
struct ExplainedStep {
  std::string topic;
  std::string verdict;    ///< `passes`, `stops` or `tells`
  std::string decidedBy;  ///< the preference key, the catalog's key or the file
  std::string detail;
  static constexpr auto fields() {
    using S = ExplainedStep;
    return std::array{field<&S::topic>("topic"), field<&S::verdict>("verdict"), field<&S::decidedBy>("decidedBy"),
                      field<&S::detail>("detail")};
  }
};
using Steps = std::vector<ExplainedStep>;

/// A step that stops or passes.
inline ExplainedStep decision(std::string topic, bool isPassed, std::string decidedBy, std::string detail) {
  return {std::move(topic), isPassed ? passes : stops, std::move(decidedBy), std::move(detail)};
}

/// The first step that stops; null when all pass.
const ExplainedStep* firstStop(const Steps& steps);

/// The steps below each other, one a line, with what decided behind it.
std::string stepsText(const Steps& steps);

/// A moment as people read it, "Mon 2026-11-23 09:00"; "never" for 0.
std::string momentText(Clock& clock, std::int64_t moment);
/// A moment as programs read it, in ISO 8601 with the offset of the Mac's zone; nothing for 0.
std::optional<std::string> momentStamp(Clock& clock, std::int64_t moment);

}  // namespace vorlu::ctl
