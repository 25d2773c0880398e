#include "ctl/rehearsal_plan.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vorlu::ctl {
namespace {

constexpr std::array answers = {std::pair{UserAnswer::update, "update"}, std::pair{UserAnswer::defer, "defer"},
                                std::pair{UserAnswer::ignore, "ignore"}, std::pair{UserAnswer::quit, "quit"}};

}  // namespace

std::optional<UserAnswer> userAnswer(std::string_view name) {
  const auto found = std::ranges::find_if(answers, [&](const auto& row) { return row.second == name; });
  return found == answers.end() ? std::nullopt : std::optional(found->first);
}

const char* nameOf(UserAnswer answer) {
  return std::ranges::find(answers, answer, [](const auto& row) { return row.first; })->second;
}

}  // namespace vorlu::ctl
