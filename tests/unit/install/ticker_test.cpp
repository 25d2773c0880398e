#include "vorlu/install/ticker.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;

class Tickers : public InstallRun {
 protected:
  Tickers() : InstallRun(false) { mac.makeFolder(paths::components); }

  /// What the window was told, and forgets it.
  std::string window() {
    std::string lines = mac.exists(paths::dialogCommandFile) ? mac.read(paths::dialogCommandFile) : "";
    mac.files.remove(paths::dialogCommandFile);
    return lines;
  }
  double secondsOf(const std::function<void()>& run) {
    const Seconds start = mac.clock.now();
    run();
    return mac.clock.now() - start;
  }
  static std::string bar(std::initializer_list<int> values) {
    std::string lines;
    for (const int value : values) lines += fmt::format("progress: {}\n", value);
    return lines;
  }
};

TEST_F(Tickers, MoveByTheSameWhateverTheWorkTakes) {
  const struct {
    Ticker ticker;
    std::uint64_t kilobytes;
    Seconds work;  ///< when it ends
    Seconds end;   ///< when the ticker does
    std::string lines;
  } cases[] = {
      {mountTicker, 0, 0, 0, bar({15})},
      {mountTicker, 100'000, 2.45, 2.5, bar({11, 12, 13, 15})},
      {mountTicker, 100'001, 60, 60, bar({11, 12, 13, 14, 15, 15})},
      {mountTicker, 400'001, 2.4, 2.4, bar({11, 15})},
      {extractTicker, 0, 1, 1, bar({11, 12, 15})},
      {copyTicker, 200'000, 1.6, 1.6, bar({11, 12, 15})},
  };
  for (const auto& c : cases) {
    WorkState work;
    if (c.work == 0) work.end();
    mac.clock.at(c.work, [&work] { work.end(); });
    vorlu.progress.installProgress = 10;
    EXPECT_NEAR(secondsOf([&] { c.ticker(vorlu, c.kilobytes, work); }), c.end, 0.11) << c.kilobytes;
    EXPECT_EQ(window(), c.lines) << c.kilobytes;
    EXPECT_EQ(vorlu.progress.installProgress, 15);
    mac.clock.advance(100);
  }
}

TEST_F(Tickers, OfADownloadKeepsTimeWithTheNetwork) {
  const std::string ten = bar({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  const struct {
    std::int64_t size;
    bool retry;
    bool succeeds;
    Seconds end;
    std::string lines;
  } cases[] = {
      {0, false, true, 0.12, bar({1, 2, 3, 10})},       // 50 ms a step
      {62'999, false, true, 1.95, bar({1, 2, 3, 10})},  // 9 s at 50 Mbit/s: 0.9 s a step
      {130'000, false, false, 1.5, bar({1})},           // 20 s: 2 s a step, cut short by the failure
      {0, false, true, 30, ten + bar({10})},            // slower than it should be
      {0, true, true, 0.01, bar({-10}) + "progresstext: Connection lost. Retrying download...\n" + bar({-9, 0})},
  };
  for (const auto& c : cases) {
    vorlu.progress.downloadFinished = vorlu.progress.downloadFailed = false;
    vorlu.progress.installProgress = 0;
    vorlu.currentApp.installerSize = c.size;
    mac.clock.at(c.end, [&] { (c.succeeds ? vorlu.progress.downloadFinished : vorlu.progress.downloadFailed) = true; });
    progressTicker(vorlu, c.retry);
    EXPECT_EQ(window(), c.lines) << c.size << " " << c.end;
    mac.clock.advance(100);
  }
}

TEST_F(Tickers, WorkRunsBesideThemAndItsExceptionArrives) {
  bool worked = false;
  runWithTicker(vorlu, mountTicker, 0, [&] {
    mac.clock.sleep(std::chrono::seconds(3));
    worked = true;
  });
  EXPECT_TRUE(worked);
  EXPECT_EQ(vorlu.progress.installProgress, 5);
  EXPECT_THROW(runWithTicker(vorlu, copyTicker, 0, [] { throw RunEnded{1}; }), RunEnded);
  EXPECT_EQ(vorlu.progress.installProgress, 10);
  const auto failingTicker = [](Vorlu&, std::uint64_t, const WorkState&) { throw std::runtime_error("ticker"); };
  worked = false;
  EXPECT_THROW(runWithTicker(vorlu, failingTicker, 0, [&] { worked = true; }), std::runtime_error);
  EXPECT_TRUE(worked);
}

}  // namespace
}  // namespace vorlu::test
