#pragma once

#include <string>
#include <vector>

namespace vorlu {

struct Vorlu;

/// Turns the arguments (without the program's name, at least one) into one option, makes its checks and runs its flow.
/// Returns where the flow does; otherwise the run ends inside.
void dispatchCommand(Vorlu& vorlu, const std::vector<std::string>& arguments);

}  // namespace vorlu
