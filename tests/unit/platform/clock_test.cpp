#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/temporary_folder.h"
#include "vorlu/platform/linux/linux_clock.h"

namespace vorlu::test {
namespace {

constexpr Seconds beforeNewYear = 1798631999;   // Wed 2026-12-30 06:59:59 in New York, 11:59:59 in London
constexpr Seconds marchMorning = 1774749600;    // Sun 2026-03-29 02:00 UTC, an hour after London's clocks went forward
constexpr Seconds octoberMorning = 1792900800;  // Sun 2026-10-25 04:00 UTC, three hours after they went back

TEST(LinuxClock, TellsDatesInItsZone) {
  ::setenv("TZ", "America/New_York", 1);
  const TemporaryFolder root;
  LinuxHost host{RootFolder(root.path())};
  LinuxClock clock(host);
  EXPECT_EQ(clock.format(beforeNewYear, "EEEEEEE MMM dd YYYY HH:mm:ss Z"), "Wed Dec 30 2027 06:59:59 -0500");
  EXPECT_EQ(clock.format(marchMorning, "yyyy-MM-dd HH:mm Z"), "2026-03-28 22:00 -0400");
  const auto shown = [&](Seconds when, Zone zone) {
    const CalendarFields f = clock.fields(when, zone);
    return fmt::format("{}-{}-{} {}:{}:{} day {}", f.year, f.month, f.day, f.hour, f.minute, f.second, f.weekday);
  };
  EXPECT_EQ(shown(beforeNewYear, Zone::london), "2026-12-30 11:59:59 day 4");
  EXPECT_EQ(shown(marchMorning, Zone::local), "2026-3-28 22:0:0 day 7");

  const auto hours = [&](Seconds when, int hour, Zone zone) {
    return (clock.hourOfDay(when, hour, zone).value_or(0) - when) / 3600;
  };
  EXPECT_EQ(hours(marchMorning, 0, Zone::london), -2);
  EXPECT_EQ(hours(marchMorning, 1, Zone::london), -1) << "01:00 is skipped: the end of the gap";
  EXPECT_EQ(hours(marchMorning, 24, Zone::london), 21);
  EXPECT_EQ(hours(marchMorning, 24, Zone::local), 2);
  EXPECT_EQ(hours(octoberMorning, 1, Zone::london), -4) << "it comes twice: the first";
  EXPECT_EQ(hours(octoberMorning, 24, Zone::london), 20);
  EXPECT_FALSE(clock.hourOfDay(marchMorning, 25, Zone::london));
  ::unsetenv("TZ");
}

}  // namespace
}  // namespace vorlu::test
