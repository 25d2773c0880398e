#include "vorlu/server/catalog_window.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/virtual_clock.h"

namespace vorlu::test {
namespace {

using namespace std::chrono;

std::int64_t utc(sys_days day, hours hour, seconds rest = seconds(0)) {
  return (day.time_since_epoch() + hour + rest) / seconds(1);
}

constexpr sys_days winterDay = sys_days(2026y / January / 15);
constexpr sys_days summerDay = sys_days(2026y / July / 1);

TEST(CatalogWindow, HoldsTimesOfTodayInLondon) {
  const struct {
    const char* what;
    std::int64_t timestamp;
    CatalogWindow window;
    std::int64_t now;
    bool inside;
  } cases[] = {
      {"winter, first second", utc(winterDay, 10h), {10, 14}, utc(winterDay, 12h), true},
      {"winter, before", utc(winterDay, 10h, -1s), {10, 14}, utc(winterDay, 12h), false},
      {"winter, last second", utc(winterDay, 14h, -1s), {10, 14}, utc(winterDay, 12h), true},
      {"winter, end", utc(winterDay, 14h), {10, 14}, utc(winterDay, 12h), false},
      {"summer, first second", utc(summerDay, 9h), {10, 14}, utc(summerDay, 12h), true},
      {"summer, before", utc(summerDay, 9h, -1s), {10, 14}, utc(summerDay, 12h), false},
      {"summer, afternoon", utc(summerDay, 13h), {14, 24}, utc(summerDay, 20h), true},
      {"summer, till midnight", utc(summerDay, 23h, -1s), {14, 24}, utc(summerDay, 20h), true},
      {"summer, past midnight", utc(summerDay, 23h), {14, 24}, utc(summerDay, 20h), false},
      {"yesterday", utc(summerDay - days(1), 11h), {10, 14}, utc(summerDay, 12h), false},
      {"never", 0, {0, 24}, utc(sys_days(1970y / January / 1), 1h), false},
      {"negative", -5, {0, 24}, 0, false},
  };
  VirtualClock clock;
  for (const auto& c : cases) {
    EXPECT_EQ(isTimestampInWindow(clock, c.timestamp, c.window.startHour, c.window.endHour, static_cast<double>(c.now)),
              c.inside)
        << c.what;
  }
}

}  // namespace
}  // namespace vorlu::test
