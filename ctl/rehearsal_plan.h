#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlu::ctl {

/// What a user does with a prompt.
enum class UserAnswer {
  update,  ///< agrees
  defer,   ///< puts it off; where he can't, he lets the time run out
  ignore,  ///< leaves the prompt standing until he logs out; where he can't, he lets the time run out
  quit,    ///< kills the prompt
};

/// By its name; nothing for any other word.
std::optional<UserAnswer> userAnswer(std::string_view name);
const char* nameOf(UserAnswer answer);

/// What is rehearsed: a Mac with one application that is always open, of which new versions come.
struct RehearsalPlan {
  std::string preferences;  ///< the profile, a property list
  std::int64_t start = 0;   ///< seconds since the epoch
  int days = 30;
  int fromMinute = 9 * 60;                              ///< of the day: the user logs in
  int toMinute = 17 * 60;                               ///< he logs out; at this minute a last run takes place
  int releaseEvery = 7;                                 ///< days between two versions; 0: the first alone
  std::vector<UserAnswer> answers{UserAnswer::update};  ///< prompt by prompt; the last one for ever
  std::int64_t answerSeconds = 60;                      ///< that a user takes to answer
  std::string zone = {};                                ///< Olson name; empty for the machine's
};

}  // namespace vorlu::ctl
