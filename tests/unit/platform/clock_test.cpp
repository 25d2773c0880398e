#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/temporary_folder.h"
#include "tests/support/virtual_clock.h"
#include "vorlu/platform/linux/linux_clock.h"

namespace vorlu::test {
namespace {

using namespace std::chrono_literals;

/// The machine's zone while this lives.
class MachineZone {
 public:
  explicit MachineZone(const char* name) { ::setenv("TZ", name, 1); }
  MachineZone(const MachineZone&) = delete;
  MachineZone& operator=(const MachineZone&) = delete;
  ~MachineZone() { ::unsetenv("TZ"); }
};

constexpr Seconds beforeNewYear = 1798631999;   // Wed 2026-12-30 06:59:59 in New York, 11:59:59 in London
constexpr Seconds marchMorning = 1774749600;    // Sun 2026-03-29 02:00 UTC, an hour after London's clocks went forward
constexpr Seconds octoberMorning = 1792900800;  // Sun 2026-10-25 04:00 UTC, three hours after they went back

/// What both clocks promise of dates, in the zone of New York.
void keepsTheContract(Clock& clock) {
  struct Pattern {
    Seconds when;
    const char* pattern;
    const char* text;
  };
  for (const Pattern& p : {Pattern{beforeNewYear, "EEEEEEE", "Wed"},
                           {beforeNewYear, "EEEEEEE MMM dd HH:mm:ss", "Wed Dec 30 06:59:59"},
                           {beforeNewYear, "MMM dd YYYY HH:mm:ss Z", "Dec 30 2027 06:59:59 -0500"},
                           {beforeNewYear, "MMM dd yyyy HH:mm:ss Z", "Dec 30 2026 06:59:59 -0500"},
                           {beforeNewYear + 0.999, "ss", "59"},
                           {marchMorning, "yyyy-MM-dd HH:mm Z", "2026-03-28 22:00 -0400"},
                           {0, "EEEE d MMMM yyyy", "Wednesday 31 December 1969"}})
    EXPECT_EQ(clock.format(p.when, p.pattern), p.text) << p.pattern;

  const auto shown = [&](Seconds when, Zone zone) {
    const CalendarFields f = clock.fields(when, zone);
    return fmt::format("{}-{}-{} {}:{}:{} day {}", f.year, f.month, f.day, f.hour, f.minute, f.second, f.weekday);
  };
  EXPECT_EQ(shown(beforeNewYear, Zone::local), "2026-12-30 6:59:59 day 4");
  EXPECT_EQ(shown(beforeNewYear, Zone::london), "2026-12-30 11:59:59 day 4");
  EXPECT_EQ(shown(marchMorning, Zone::london), "2026-3-29 3:0:0 day 1");
  EXPECT_EQ(shown(marchMorning, Zone::local), "2026-3-28 22:0:0 day 7");

  struct Hour {
    Seconds when;
    int hour;
    Zone zone;
    Seconds moment;  ///< since `when`
  };
  constexpr Seconds h = 3600;
  for (const Hour& c : {Hour{marchMorning, 0, Zone::london, -2 * h},
                        {marchMorning, 1, Zone::london, -1 * h},  // 01:00 is skipped: the end of the gap
                        {marchMorning, 10, Zone::london, 7 * h},
                        {marchMorning, 24, Zone::london, 21 * h},
                        {marchMorning, 24, Zone::local, 2 * h},
                        {octoberMorning, 0, Zone::london, -5 * h},
                        {octoberMorning, 1, Zone::london, -4 * h},  // comes twice: the first
                        {octoberMorning, 24, Zone::london, 20 * h}})
    EXPECT_EQ(clock.hourOfDay(c.when, c.hour, c.zone).value_or(0) - c.when, c.moment) << c.when << " " << c.hour;
  EXPECT_FALSE(clock.hourOfDay(marchMorning, 25, Zone::london));
  EXPECT_FALSE(clock.hourOfDay(marchMorning, -1, Zone::london));
}

TEST(ClockContract, LinuxClock) {
  const MachineZone zone("America/New_York");
  const TemporaryFolder root;
  LinuxHost host{RootFolder(root.path())};
  LinuxClock clock(host);
  keepsTheContract(clock);
  const Seconds before = clock.now();
  clock.sleep(5ms);
  EXPECT_GE(clock.now() - before, 0.005);
}

TEST(ClockContract, VirtualClock) {
  VirtualClock clock(VirtualClock::defaultStart, "America/New_York");
  keepsTheContract(clock);
  const Seconds before = clock.now();
  clock.sleep(1500ms);
  EXPECT_EQ(clock.now() - before, 1.5);
  EXPECT_EQ(clock.format(VirtualClock::defaultStart, "EEEE yyyy-MM-dd HH:mm Z"), "Monday 2026-03-02 07:00 -0500");
}

TEST(LinuxClock, FollowsTheHostFile) {
  const TemporaryFolder root;
  LinuxHost host{RootFolder(root.path())};
  LinuxClock clock(host);
  const auto real = [] {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  };
  struct Case {
    const char* clock;
    double mac, rate;  ///< rate 0: real time
  };
  const double start = real();
  for (const Case& c : {Case{R"({{"real": {:.6f}, "mac": 1000, "rate": 60}})", 1000, 60},
                        {R"({{"real": {:.6f}, "mac": 2000.5}})", 2000.5, 1},
                        {R"({{"real": {:.6f}, "mac": 1000, "rate": 0}})", 0, 0},
                        {R"({{"real": {:.6f}, "mac": "1000"}})", 0, 0}}) {
    const std::string text = "{\"clock\": " + fmt::format(fmt::runtime(c.clock), start) + "}";
    std::filesystem::remove(root / LinuxHost::path);
    writeFile(root / LinuxHost::path, text);
    const double low = real();
    const double now = clock.now();
    const double high = real();
    const auto mac = [&](double moment) { return c.rate == 0 ? moment : c.mac + (moment - start) * c.rate; };
    EXPECT_GE(now, mac(low) - 0.001) << text;
    EXPECT_LE(now, mac(high) + 0.001) << text;
  }
  writeFile(root / LinuxHost::path, R"({"clock": {"real": 0, "mac": 0, "rate": 10000}})");
  const double before = real();
  clock.sleep(60'000ms);
  EXPECT_LT(real() - before, 5) << "a minute at this rate is 6 ms";
}

TEST(VirtualClock, PlaysEventsAtTheirMoments) {
  VirtualClock clock(1000);
  std::string played;
  const auto note = [&](const char* name) { return [&, name] { played += fmt::format("{}@{} ", name, clock.now()); }; };
  clock.at(30, note("second"));
  clock.at(10, [&] {
    note("first")();
    clock.at(5, note("added"));
  });
  clock.at(30, note("third"));
  clock.at(31, note("later"));
  clock.sleep(30s);
  EXPECT_EQ(played, "first@1010 added@1015 second@1030 third@1030 ");
  EXPECT_EQ(clock.now(), 1030);
  EXPECT_EQ(clock.sleeps(), std::vector<std::chrono::milliseconds>{30s});
  EXPECT_THROW(while (true) clock.sleep(24h), std::runtime_error);
}

}  // namespace
}  // namespace vorlu::test
