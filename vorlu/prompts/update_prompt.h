#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/detection/app_inventory.h"
#include "vorlu/prompts/prompt_size.h"

namespace vorlu {

struct Vorlu;

/// An application as prompts show it.
struct PromptApp {
  std::string name;
  std::string icon;  ///< path or URL
  std::string latestVersion;
};

/// The apps of these updates, in order, each with its icon.
std::vector<PromptApp> promptApps(Vorlu& vorlu, const std::vector<ApplicationInventory>& updates);

/// State of a list's rows: "pending" before an update, "fail" after a failed one.
enum class RowStatus { pending, fail };
/// The document for `--jsonstring`, valid whatever the names hold; the caller's shell line quotes it.
std::string appListJson(const std::vector<PromptApp>& apps, RowStatus status);

/// `gracePeriodMinutes` as it is used: 0 or less counts as 15, and a week is the longest.
std::int64_t usableGraceMinutes(std::int64_t configured);
/// `refreshInterval` as it is used: 10 to 120 seconds.
std::int64_t usableRefreshInterval(std::int64_t configured);

/// Everything that the initial and the grace period prompt of a run show: ready texts, icons and sizes.
struct UpdatePrompt {
  bool selfService = false;  ///< the second button skips
  std::string title;
  std::string initialMessage;
  std::string graceMessage;
  std::string completeMessage;  ///< for the completion prompt after this update
  std::string updateButton;
  std::string deferButton;  ///< or skip
  std::string icon;
  std::string overlayIcon;   ///< empty for none
  std::string appList;       ///< JSON; empty in a prompt without a list
  bool compactHead = false;  ///< one app over its list: smaller icon, larger title
  PromptSize initialSize;
  PromptSize graceSize;
  std::int64_t refreshInterval = 20;  ///< seconds
  std::int64_t graceSeconds = 900;
};

/// What the scheduled flow knows when it prepares its prompts.
struct ScheduledPromptInput {
  std::vector<PromptApp> apps;             ///< at least one
  std::string deferralOption;              ///< as held by the run: "specifyDeferralLimit", …, "selfService"
  std::optional<std::int64_t> deferCount;  ///< deferrals left; absent is told as 0
  std::string dialogIcon;                  ///< of `chooseDialogIcon`
};
/// Texts and sizes from `ScheduledUpdates`. Logs a missing overlay icon.
UpdatePrompt prepareScheduledPrompt(Vorlu& vorlu, const ScheduledPromptInput& input);

/// What the forced flow knows of one receipt.
struct ForcedPromptInput {
  PromptApp app;
  std::optional<std::int64_t> deferrals;  ///< left; absent when the receipt allows none
  std::int64_t graceMinutes = 15;         ///< 0 or less counts as 15
};
/// Texts and sizes from `ForcedUpdates`, the icon included. Logs a missing overlay icon.
UpdatePrompt prepareForcedPrompt(Vorlu& vorlu, const ForcedPromptInput& input);

}  // namespace vorlu
