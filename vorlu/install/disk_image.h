#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// Writes an image that asks to agree to a licence anew as a plain one beside it, named in `convertedImagePath`. False,
/// logged, when there is no such image afterwards.
bool convertImage(Vorlu& vorlu, const std::string& path);

/// Attaches an image; its volume is then `mountPoint`, which is empty when it can't be attached. That is logged and
/// answered with false. `showProgress`: the bar moves by 5 meanwhile.
bool mountImage(Vorlu& vorlu, const std::string& path, bool showProgress);

/// Detaches a volume and logs what the tool says; false when it stays attached.
bool detachImage(Vorlu& vorlu, const std::string& mountPoint);

/// The volume of an image that may be attached already: attaching it again tells. Empty when it can't be attached.
std::string volumeOf(Vorlu& vorlu, const std::string& imagePath);

}  // namespace vorlu
