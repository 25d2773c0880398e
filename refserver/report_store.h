#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vorlu/platform/result.h"

namespace vorlu::refserver {

/// A report as it is listed.
struct StoredReport {
  std::string id;      ///< SHA-256 of the body, 64 lower-case hexadecimal digits
  double arrived = 0;  ///< seconds since the epoch
  std::int64_t bytes = 0;
};

/// The reports that arrived, as they were sent, in one SQLite file of a folder. Several threads and programs may use it
/// at once.
class ReportStore {
 public:
  explicit ReportStore(std::string folder) : folder_(std::move(folder)) {}

  /// Keeps a body; one that is known only gets the new time. Answers its id.
  Result<std::string> put(const std::string& body, double arrived) const;
  /// In order of arrival; none before the first one came.
  Result<std::vector<StoredReport>> list() const;
  /// The body of the one report whose id begins so.
  Result<std::string> body(const std::string& idStart) const;

 private:
  std::string folder_;
};

}  // namespace vorlu::refserver
