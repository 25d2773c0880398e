#include "vorlu/install/ticker.h"

#include <algorithm>
#include <chrono>

#include "vorlu/install/network_quality.h"
#include "vorlu/install/progress_bar.h"
#include "vorlu/platform/termination.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds longestNap{100};  // so long may the end of the work go unnoticed
constexpr int workSteps = 5;
constexpr int downloadSteps = 10;

template <class IsOver>
void pause(Clock& clock, milliseconds duration, IsOver isOver) {
  for (; duration > milliseconds::zero() && !isOver(); duration -= longestNap)
    clock.sleep(std::min(duration, longestNap));
}

template <class IsOver>
void waitUntil(Clock& clock, IsOver isOver) {
  while (!isOver()) clock.sleep(longestNap);
}

milliseconds pauseBySize(std::uint64_t kilobytes, milliseconds shortest) {
  if (kilobytes <= 100'000) return shortest;
  if (kilobytes <= 200'000) return milliseconds(1500);
  return milliseconds(kilobytes <= 400'000 ? 1900 : 2500);
}

void tickWhileWorking(Vorlu& vorlu, milliseconds interval, const WorkState& work) {
  Clock& clock = vorlu.platform.clock;
  const auto isOver = [&work] { return work.isOver(); };
  const int target = vorlu.progress.installProgress + workSteps;
  for (int step = 0; step < workSteps && !isOver(); ++step) {
    pause(clock, interval, isOver);
    stepBar(vorlu);
  }
  waitUntil(clock, isOver);
  setBar(vorlu, target);
}

/// A tenth of the time that the transfer should take.
milliseconds pauseByNetwork(Vorlu& vorlu) {
  const std::int64_t kilobytes =
      std::clamp(vorlu.currentApp.installerSize, std::int64_t{0}, std::int64_t{1'000'000'000'000});
  const std::int64_t seconds = kilobytes / 1000 * 8 / networkSpeed(vorlu);
  if (seconds > 9) return std::chrono::seconds(seconds / 10);
  return seconds == 0 ? milliseconds(50) : milliseconds(seconds * 100);
}

/// Calls a function at the end of a scope.
class AtEnd {
 public:
  explicit AtEnd(const std::function<void()>& call) : call_(call) {}
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;
  ~AtEnd() { call_(); }

 private:
  const std::function<void()>& call_;
};

}  // namespace

void mountTicker(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work) {
  tickWhileWorking(vorlu, pauseBySize(kilobytes, milliseconds(1200)), work);
}

void extractTicker(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work) {
  tickWhileWorking(vorlu, pauseBySize(kilobytes, milliseconds(900)), work);
}

void copyTicker(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work) {
  extractTicker(vorlu, kilobytes, work);
}

void progressTicker(Vorlu& vorlu, bool isRetry) {
  Clock& clock = vorlu.platform.clock;
  InstallProgress& progress = vorlu.progress;
  const auto isOver = [&progress] { return progress.downloadFinished || progress.downloadFailed; };
  const milliseconds interval = pauseByNetwork(vorlu);
  if (isRetry) {
    stepBar(vorlu, -downloadSteps);
    writeDialogCommand(vorlu, "progresstext: Connection lost. Retrying download...");
  }
  const int target = progress.installProgress + downloadSteps;
  for (int step = 0; step < downloadSteps && !isOver(); ++step) {
    stepBar(vorlu);
    pause(clock, interval, isOver);
  }
  waitUntil(clock, isOver);
  if (progress.downloadFinished) setBar(vorlu, target);
}

void runWithTicker(Vorlu& vorlu, const std::function<void()>& work, const std::function<void()>& atEnd,
                   const std::function<void()>& ticker) {
  std::future<void> worked = vorlu.progress.workQueue.submit([&] {
    const AtEnd end(atEnd);
    work();
  });
  std::future<void> ticked;
  try {
    ticked = vorlu.progress.tickerQueue.submit([&ticker] {
      try {
        ticker();
      } catch (const Terminated&) {
        // How far the work came is the work's to say.
      }
    });
  } catch (...) {
    worked.wait();  // it uses what the caller owns
    throw;
  }
  worked.wait();
  ticked.wait();
  worked.get();
  ticked.get();
}

void runWithTicker(Vorlu& vorlu, Ticker ticker, std::uint64_t bytes, const std::function<void()>& work) {
  WorkState state;
  runWithTicker(
      vorlu, work, [&] { state.end(); }, [&] { ticker(vorlu, bytes / 1000, state); });
}

}  // namespace vorlu
