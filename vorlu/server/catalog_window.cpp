#include "vorlu/server/catalog_window.h"

namespace vorlu {

std::optional<CatalogWindow> catalogWindowAt(int londonHour) {
  if (londonHour < 10) return std::nullopt;
  if (londonHour < 14) return CatalogWindow{10, 14};
  return CatalogWindow{14, 24};
}

bool isTimestampInWindow(Clock& clock, std::int64_t timestamp, int startHour, int endHour, Seconds now) {
  if (timestamp < 1) return false;
  const std::optional<Seconds> start = clock.hourOfDay(now, startHour, Zone::london);
  const std::optional<Seconds> end = clock.hourOfDay(now, endHour, Zone::london);
  if (!start || !end) return false;
  const auto moment = static_cast<Seconds>(timestamp);
  return moment >= *start && moment < *end;
}

bool isCatalogDue(Clock& clock, std::int64_t lastAsked, Seconds now) {
  const auto window = catalogWindowAt(clock.fields(now, Zone::london).hour);
  return window && !isTimestampInWindow(clock, lastAsked, window->startHour, window->endHour, now);
}

}  // namespace vorlu
