#pragma once

#include <sys/types.h>

#include <vector>

namespace vorlu {

/// Ids of all processes that /proc shows; empty without it.
std::vector<pid_t> processIds();

}  // namespace vorlu
