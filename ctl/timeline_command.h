#pragma once

#include <optional>
#include <string>

#include "ctl/command.h"
#include "vorlu/platform/clock.h"

namespace vorlu::ctl {

/// `vorluctl timeline --prefs FILE …`: what a user sees over the next days with a profile.
Answer timelineCommand(const Arguments& arguments);

/// "2026-11-23 09:00" by the clock's zone, in seconds since the epoch; nothing for any other text.
std::optional<std::int64_t> parseMoment(Clock& clock, const std::string& text);

}  // namespace vorlu::ctl
