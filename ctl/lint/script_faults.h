#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/lint/finding.h"
#include "vorlu/detection/catalog_script.h"

namespace vorlu::ctl {

/// Where a script of the catalog is run: those around an install have some ends of lines repaired.
enum class ScriptUse { lookUp, install };

struct ScriptFault {
  Severity severity = Severity::error;
  std::string problem;
  std::string advice;
};

/// What a shell says of a joined script's syntax; nothing when it takes it, or can't be asked.
using SyntaxCheck = std::function<std::optional<std::string>(const PreparedScript&)>;

/// What becomes of a script whose lines are joined with semicolons before it runs. The shell is asked when nothing else
/// is wrong.
std::vector<ScriptFault> scriptFaults(std::string_view script, ScriptUse use, const SyntaxCheck& syntax);

/// Asks the script's own shell, which reads it without running anything.
std::optional<std::string> shellSyntaxFault(const PreparedScript& script);

}  // namespace vorlu::ctl
