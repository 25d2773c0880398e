#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ctl/lint/located_value.h"

namespace vorlu::ctl {

enum class Severity { error, warning };

/// One thing that is wrong, or that most likely isn't meant so.
struct Finding {
  Severity severity = Severity::error;
  Position at;
  std::string path;     ///< of the key; empty: the file as a whole
  std::string problem;  ///< what is wrong and what comes of it
  std::string advice;
};

/// What was found in one file.
class Findings {
 public:
  void error(Position at, std::string path, std::string problem, std::string advice);
  void warning(Position at, std::string path, std::string problem, std::string advice);

  bool hasErrors() const;
  /// In the order of the file.
  const std::vector<Finding>& sorted();

 private:
  std::vector<Finding> findings_;
};

/// One line a finding, as compilers write it, and one that counts them.
std::string findingsAsText(std::string_view file, const std::vector<Finding>& findings);
/// An array of records.
std::string findingsAsJson(std::string_view file, const std::vector<Finding>& findings);

}  // namespace vorlu::ctl
