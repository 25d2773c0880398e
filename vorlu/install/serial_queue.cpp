#include "vorlu/install/serial_queue.h"

namespace vorlu {

SerialQueue::~SerialQueue() {
  {
    const std::scoped_lock lock(mutex_);
    closing_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
}

std::future<void> SerialQueue::submit(std::function<void()> task) {
  std::packaged_task<void()> packaged(std::move(task));
  std::future<void> end = packaged.get_future();
  {
    const std::scoped_lock lock(mutex_);
    if (!thread_.joinable()) thread_ = std::thread([this] { runTasks(); });
    tasks_.push_back(std::move(packaged));
  }
  changed_.notify_one();
  return end;
}

void SerialQueue::runTasks() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return closing_ || !tasks_.empty(); });
    if (tasks_.empty()) return;
    std::packaged_task<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    lock.lock();
  }
}

}  // namespace vorlu
