#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/install/copy_list.h"

namespace vorlu {

struct Vorlu;

/// Places the items under the selected app's `destinationPath`, with its permissions. What can't be placed is logged
/// and leaves what stood there as it was. `mayMove`: items come from a folder that is emptied afterwards.
/// `showProgress`: the bar moves by 5 with each item.
void placeItems(Vorlu& vorlu, const std::vector<AppCopyArr>& items, bool mayMove, bool showProgress = false);

/// Sets owner, group and `mode` on an item and all below it without following links. Fails with the first item that
/// refused, after trying all.
Status setItemPermissions(FileManager& files, const std::string& path, std::optional<mode_t> mode,
                          const std::string& owner, const std::string& group);

/// The catalog's mode, whose decimal digits are octal ones: 755 is 0755. Nothing for 0 and for what is no mode.
std::optional<mode_t> modeFromDigits(std::int64_t digits);

/// Clears what a run left that was killed while it placed an item, and puts an app back that stood aside at that
/// moment.
void recoverPlacement(Vorlu& vorlu);

}  // namespace vorlu
