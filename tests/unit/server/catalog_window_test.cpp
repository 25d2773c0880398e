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
  VirtualClock clock;
  const auto isInside = [&clock](std::int64_t timestamp, CatalogWindow window, std::int64_t now) {
    return isTimestampInWindow(clock, timestamp, window.startHour, window.endHour, static_cast<double>(now));
  };
  const std::int64_t winterNow = utc(winterDay, 12h);
  EXPECT_FALSE(isInside(utc(winterDay, 10h, -1s), {10, 14}, winterNow));
  EXPECT_TRUE(isInside(utc(winterDay, 10h), {10, 14}, winterNow));
  EXPECT_TRUE(isInside(utc(winterDay, 14h, -1s), {10, 14}, winterNow));
  EXPECT_FALSE(isInside(utc(winterDay, 14h), {10, 14}, winterNow));
  const std::int64_t summerNow = utc(summerDay, 20h);
  EXPECT_FALSE(isInside(utc(summerDay, 9h, -1s), {10, 14}, summerNow));
  EXPECT_TRUE(isInside(utc(summerDay, 9h), {10, 14}, summerNow));
  EXPECT_TRUE(isInside(utc(summerDay, 23h, -1s), {14, 24}, summerNow));
  EXPECT_FALSE(isInside(utc(summerDay, 23h), {14, 24}, summerNow)) << "past midnight";
  EXPECT_FALSE(isInside(utc(summerDay - days(1), 11h), {10, 14}, summerNow)) << "yesterday";
  EXPECT_FALSE(isInside(0, {0, 24}, utc(sys_days(1970y / January / 1), 1h))) << "never";
}

}  // namespace
}  // namespace vorlu::test
