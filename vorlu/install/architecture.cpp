#include "vorlu/install/architecture.h"

#include <algorithm>

namespace vorlu {

bool isArchitecture(const CurrentApp& app, std::string_view lowerCaseWord) {
  return std::equal(app.architecture.begin(), app.architecture.end(), lowerCaseWord.begin(), lowerCaseWord.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
}

}  // namespace vorlu
