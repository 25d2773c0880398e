#include "vorlu/install/architecture.h"

#include "vorlu/detection/letter_case.h"

namespace vorlu {

bool isArchitecture(const CurrentApp& app, std::string_view lowerCaseWord) {
  return isInAnyCase(app.architecture, lowerCaseWord);
}

}  // namespace vorlu
