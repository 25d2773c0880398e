#pragma once

#include <functional>
#include <string>

namespace vorlu {

struct Vorlu;

/// The answer of Self Service when nothing is pending. Stores `CurrentRunType` "N/A", shows the prompt for 20 seconds
/// at most, logs its end, tells Jamf Pro, runs the inventory and `resetDeferrals` (may be empty), and ends the run
/// with 0.
[[noreturn]] void showUpToDatePrompt(Vorlu& vorlu, const std::string& dialogIcon,
                                     const std::function<void()>& resetDeferrals);

}  // namespace vorlu
