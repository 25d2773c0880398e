#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

namespace vorlu {

/// Runs tasks one after the other on a thread of its own, which starts with the first task.
class SerialQueue {
 public:
  SerialQueue() = default;
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;
  /// Waits for all tasks that were given.
  ~SerialQueue();

  /// The task's end. `get` on it throws what the task threw. Throws std::system_error when no thread can be made.
  std::future<void> submit(std::function<void()> task);

 private:
  void runTasks();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::packaged_task<void()>> tasks_;
  bool closing_ = false;
  std::thread thread_;
};

}  // namespace vorlu
