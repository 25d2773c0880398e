#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlu {

struct Vorlu;

/// Whose work can't be done.
enum class ErrorFlavour {
  none,     ///< nobody watches: no prompt
  update,   ///< updates can't be checked for
  install,  ///< an install was asked for
};

/// Tells the user that a run can't proceed; `code` has three digits. The prompt stays until the user closes it, beyond
/// the agent's end, and is not waited for. Its position is that of the section which the flavour belongs to.
void showErrorPrompt(Vorlu& vorlu, ErrorFlavour flavour, std::string_view code);

}  // namespace vorlu
