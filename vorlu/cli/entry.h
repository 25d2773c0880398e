#pragma once

#include <string>
#include <vector>

namespace vorlu {

struct Vorlu;

/// The whole life of the command; `arguments` without the program's name. Returns the exit status.
int runVorlu(Vorlu& vorlu, const std::vector<std::string>& arguments);

}  // namespace vorlu
