#pragma once

#include <cstdint>
#include <optional>

#include "vorlu/platform/clock.h"

namespace vorlu {

/// Hours of a London day between which a computer asks the server for the catalog once.
struct CatalogWindow {
  int startHour = 0;
  int endHour = 0;
  bool operator==(const CatalogWindow&) const = default;
};

/// The window that an hour (0 to 23) lies in; nothing from midnight to ten.
std::optional<CatalogWindow> catalogWindowAt(int londonHour);

/// Whether `timestamp` (seconds since the epoch) lies between two hours of the day of `now` in London.
bool isTimestampInWindow(Clock& clock, std::int64_t timestamp, int startHour, int endHour, Seconds now);

/// Whether the catalog's server is asked at `now`: once in each window, by when it was asked last.
bool isCatalogDue(Clock& clock, std::int64_t lastAsked, Seconds now);

}  // namespace vorlu
