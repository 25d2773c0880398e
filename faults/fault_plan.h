#pragma once

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vorlu::faults {

/// What a call of the agent to its platform touches; it decides which faults the call can meet.
/// A download writes, too; what removes, or changes attributes, needs no room.
enum class Touch : char { look, read, write, change, child, network, download };

/// `full` and `readOnly` stay from their call on; the others pass. A kill ends the process before or after the call.
enum class Fault { io, full, readOnly, descriptors, interrupted, shortWrite, killedBefore, killedAfter };
inline constexpr std::pair<Fault, const char*> allFaults[] = {
    {Fault::io, "io"},
    {Fault::full, "full"},
    {Fault::readOnly, "readOnly"},
    {Fault::descriptors, "descriptors"},
    {Fault::interrupted, "interrupted"},
    {Fault::shortWrite, "shortWrite"},
    {Fault::killedBefore, "killedBefore"},
    {Fault::killedAfter, "killedAfter"},
};

inline bool canMeet(Touch touch, Fault fault) {
  const bool writes = touch == Touch::write || touch == Touch::download;
  const bool opens = touch == Touch::read || touch == Touch::child || touch == Touch::network || writes;
  switch (fault) {
    case Fault::io:
      return true;
    case Fault::full:
    case Fault::shortWrite:
      return writes;
    case Fault::readOnly:
      return writes || touch == Touch::change;
    case Fault::descriptors:
    case Fault::interrupted:
      return opens;
    default:
      return touch != Touch::look && touch != Touch::read;
  }
}

/// Counts the agent's calls and strikes at one of them. What it has seen lies in memory shared with the process that
/// forked this one.
class FaultPlan {
 public:
  struct Seen {
    int calls = 0;
    Touch touches[20000] = {};
    char struck[4000] = "";  ///< the first call that met the fault; room for a prompt with its whole text
    char wrong[400] = "";    ///< what the forked process itself found wrong
    template <std::size_t size>
    void note(char (&text)[size], std::string_view line) {
      text[line.copy(text, sizeof text - 1)] = '\0';
    }
  };

  FaultPlan()
      : seen_(*new (::mmap(nullptr, sizeof(Seen), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Seen) {}
  ~FaultPlan() { ::munmap(&seen_, sizeof(Seen)); }
  FaultPlan(const FaultPlan&) = delete;
  FaultPlan& operator=(const FaultPlan&) = delete;

  Seen& seen() { return seen_; }
  /// Whether the fault goes on once it has come.
  bool lastsOn() const { return point_ && (point_->first == Fault::full || point_->first == Fault::readOnly); }
  /// The next calls are counted from 1; with no point none fails.
  void arm(std::optional<std::pair<Fault, int>> point) { point_ = point, seen_ = {}; }

  /// Makes the call, or answers with `fail` and the error number of the fault.
  template <class Call, class Fail>
  auto through(Touch touch, const std::string& what, Call call, Fail fail) -> decltype(call()) {
    const bool struck = meet(touch, what);
    if (const int error = struck ? errorOf(point_->first) : 0) return fail(error);
    if (struck && point_->first == Fault::killedBefore) ::kill(::getpid(), SIGKILL);
    auto answer = call();
    if (struck && point_->first == Fault::killedAfter) ::kill(::getpid(), SIGKILL);
    return answer;
  }

 private:
  /// Counts the call; whether the fault comes at it. The agent's threads don't take the same turns each time: where the
  /// point's call can't meet the fault, the next one that can does.
  bool meet(Touch touch, const std::string& what) {
    const std::scoped_lock lock(mutex_);
    const int number = ++seen_.calls;
    seen_.touches[std::min<std::size_t>(static_cast<std::size_t>(number), std::size(seen_.touches) - 1)] = touch;
    if (!point_ || number < point_->second || !canMeet(touch, point_->first)) return false;
    const bool first = seen_.struck[0] == '\0';
    if (first) seen_.note(seen_.struck, what);
    return first || lastsOn();
  }
  /// 0 for a kill.
  static int errorOf(Fault fault) {
    switch (fault) {
      case Fault::io:
        return EIO;
      case Fault::full:
      case Fault::shortWrite:
        return ENOSPC;
      case Fault::readOnly:
        return EROFS;
      case Fault::descriptors:
        return EMFILE;
      case Fault::interrupted:
        return EINTR;
      default:
        return 0;
    }
  }

  Seen& seen_;
  std::mutex mutex_;
  std::optional<std::pair<Fault, int>> point_;
};

}  // namespace vorlu::faults
