#pragma once

namespace vorlu {

/// What one look at another agent shows.
struct AgentLook {
  bool gone = false;
  bool stands = true;  ///< it still is in the state that is waited out
};

enum class WaitEnd { gone, movedOn, expired };

/// A waiting loop over another agent: looks again until the agent has gone or its state has moved on, at most `polls`
/// times.
class AgentWait {
 public:
  explicit AgentWait(int polls) : left_(polls) {}

  /// Takes the next look; true when the wait is over and `end` says why.
  bool step(const AgentLook& look) {
    --left_;
    if (look.gone)
      end_ = WaitEnd::gone;
    else if (!look.stands)
      end_ = WaitEnd::movedOn;
    else if (left_ > 0)
      return false;
    return true;
  }
  WaitEnd end() const { return end_; }

 private:
  int left_;
  WaitEnd end_ = WaitEnd::expired;
};

}  // namespace vorlu
