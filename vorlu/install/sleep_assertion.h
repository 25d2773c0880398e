#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Keeps the display awake until `allowIdleSleep`. A second call keeps the assertion that is held; a system that
/// refuses leaves none.
void preventIdleSleep(Vorlu& vorlu, const std::string& reason);
void allowIdleSleep(Vorlu& vorlu);

/// The assertion for the length of one install. Steps let go of it where their order asks for it; what is still held at
/// the end of the scope, as when the run ends in the middle, is released there.
class IdleSleepHold {
 public:
  IdleSleepHold(Vorlu& vorlu, const std::string& reason);
  ~IdleSleepHold();
  IdleSleepHold(const IdleSleepHold&) = delete;
  IdleSleepHold& operator=(const IdleSleepHold&) = delete;

 private:
  Vorlu& vorlu_;
};

}  // namespace vorlu
