#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vorlu/state/record.h"

namespace vorlu {

struct VorluErrors {
  std::optional<std::string> timeStamp;
  std::optional<std::string> message;
  static constexpr auto fields() {
    return std::array{field<&VorluErrors::timeStamp>("timeStamp"), field<&VorluErrors::message>("message")};
  }
};
using VorluWarnings = VorluErrors;

/// Run/Errors.json: what the report tells of errors and warnings, in order of arrival.
struct ErrorStruct {
  std::optional<std::vector<VorluErrors>> vorluErrors;
  std::optional<std::vector<VorluWarnings>> vorluWarnings;
  static constexpr auto fields() {
    return std::array{field<&ErrorStruct::vorluErrors>("vorluErrors"),
                      field<&ErrorStruct::vorluWarnings>("vorluWarnings")};
  }
};

}  // namespace vorlu
