#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

namespace vorlu {

struct Vorlu;

/// Says to a ticker that the work beside it is over. It never goes back.
class WorkState {
 public:
  void end() { over_ = true; }
  bool isOver() const { return over_; }

 private:
  std::atomic<bool> over_ = false;
};

// Each ticker moves the bar by a fixed number of steps, at a pace that the size suggests, until its work is over. It
// ends soon after the work, whatever pause it is in.

/// 5 steps while an image of this size is attached.
void mountTicker(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work);
/// 5 steps while an archive is extracted.
void extractTicker(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work);
/// 5 steps while an item is copied.
void copyTicker(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work);
/// 10 steps while the selected app's installer arrives, at the pace of the measured network. A retry first takes back
/// what the attempt before it was to add. A failed download leaves the bar where it came to.
void progressTicker(Vorlu& vorlu, bool isRetry);

/// Runs `work` on the work queue and `ticker` beside it; returns when both have ended. `atEnd` runs when the work has
/// ended, by an exception too, and must make the ticker end. What the work throws, or else the ticker, is thrown here.
void runWithTicker(Vorlu& vorlu, const std::function<void()>& work, const std::function<void()>& atEnd,
                   const std::function<void()>& ticker);

using Ticker = void (*)(Vorlu& vorlu, std::uint64_t kilobytes, const WorkState& work);
/// Runs `work` with a ticker paced by `bytes`.
void runWithTicker(Vorlu& vorlu, Ticker ticker, std::uint64_t bytes, const std::function<void()>& work);

}  // namespace vorlu
