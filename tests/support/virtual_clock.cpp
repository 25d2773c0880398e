#include "tests/support/virtual_clock.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace vorlu::test {

Seconds VirtualClock::now() {
  const std::scoped_lock lock(mutex_);
  return now_;
}

void VirtualClock::set(Seconds now) {
  const std::scoped_lock lock(mutex_);
  now_ = now;
}

void VirtualClock::sleep(std::chrono::milliseconds duration) {
  const Seconds seconds = std::chrono::duration<double>(duration).count();
  {
    const std::scoped_lock lock(mutex_);
    sleeps_.push_back(duration);
    slept_ += seconds;
    if (slept_ > 60.0 * 24 * 3600) throw std::runtime_error("The virtual clock was slept on for 60 days");
  }
  advance(seconds);
  // Real work on another thread, which this one may be waiting for, gets its turn.
  std::this_thread::yield();
}

void VirtualClock::advance(Seconds duration) {
  std::unique_lock lock(mutex_);
  const Seconds end = now_ + duration;
  while (!events_.empty() && events_.begin()->first <= end) {
    auto next = events_.extract(events_.begin());
    now_ = std::max(now_, next.key());
    lock.unlock();  // an event may ask the clock or add events
    next.mapped()();
    lock.lock();
  }
  now_ = std::max(now_, end);
}

void VirtualClock::at(Seconds fromNow, std::function<void()> event) {
  const std::scoped_lock lock(mutex_);
  events_.emplace(now_ + fromNow, std::move(event));
}

std::vector<std::chrono::milliseconds> VirtualClock::sleeps() {
  const std::scoped_lock lock(mutex_);
  return sleeps_;
}

}  // namespace vorlu::test
