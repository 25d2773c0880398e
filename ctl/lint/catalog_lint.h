#pragma once

#include <string>

#include "ctl/lint/finding.h"
#include "ctl/lint/script_faults.h"

namespace vorlu::ctl {

/// Everything that is wrong with a catalog, as its author would want to know before any Mac reads it.
Findings lintCatalog(std::string text, const SyntaxCheck& syntax = shellSyntaxFault);

}  // namespace vorlu::ctl
