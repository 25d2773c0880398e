#pragma once

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>

#include "vorlu/platform/result.h"

namespace vorlu {

/// Owns one file descriptor and closes it.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor() { close(); }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  void close();
  /// The number, which is the caller's to close from now on.
  int release() { return std::exchange(number_, -1); }

 private:
  int number_ = -1;
};

/// Repeats a system call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

/// The same file under a number above 2, closed in programs: a child's redirections can't hit it when the agent was
/// started with closed standard descriptors. -1 stays -1.
Descriptor aboveStandard(int number);

/// Writes everything, however many calls that takes; false with errno set when the system refuses.
bool writeAll(int descriptor, std::string_view data);

/// "{path}: {what the system says of the error number}".
Failure systemFailure(const std::string& path, int error);

}  // namespace vorlu
