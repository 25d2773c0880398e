#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/prompts/self_service.h"

namespace vorlu {

/// Which of the messages a scheduled prompt shows.
struct MessageCase {
  std::size_t apps = 1;
  bool withList = false;  ///< the apps stand in a list below, not in the message
  bool selfService = false;
  bool deferralLimit = false;  ///< "specifyDeferralLimit"
  bool noDeferrals = false;    ///< "disableDeferrals"
};

/// What the words of a message stand for.
struct MessageWords {
  std::vector<std::string> appNames;
  std::string updateButton;
  std::string deferButton;
  std::int64_t deferCount = 0;
  std::string gracePeriod;
  Advice advice;
};

/// The agent's own text of a case, its words in braces.
std::string initialText(const MessageCase& which);
std::string graceText(const MessageCase& which);

/// The message that is shown: the administrator's text with its bare words replaced, or else `ownText` with its words
/// in braces. An empty custom text counts as none. `appName` is a word only where there is one app.
std::string promptMessage(const std::optional<std::string>& custom, const std::string& ownText,
                          const MessageWords& words);

/// The defer button where deferrals are counted: the administrator's text with its `deferCount` replaced, or "Defer
/// (2)".
std::string countedDeferButton(const std::optional<std::string>& custom, std::int64_t deferCount);

/// A preference's text; an empty one counts as none.
std::string textOr(const std::optional<std::string>& custom, const std::string& otherwise);

}  // namespace vorlu
