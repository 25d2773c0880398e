#pragma once

#include <string>

#include "vorlu/platform/result.h"

namespace vorlu::reference {

Result<std::string> readTextFile(const std::string& path);
Status writeTextFile(const std::string& path, const std::string& text);

}  // namespace vorlu::reference
