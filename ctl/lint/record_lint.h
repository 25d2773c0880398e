#pragma once

#include <set>
#include <string>
#include <string_view>

#include "ctl/lint/finding.h"

namespace vorlu::ctl {

/// Takes the findings about one record of a file: the place of each is looked up by its path below the record. Once a
/// key is settled, nothing more is said of it, so that one fault makes one finding.
class RecordLint {
 public:
  /// `path` of the record itself, empty for the root of the file.
  RecordLint(const LocatedValue& record, std::string path, Findings& findings)
      : record_(record), path_(std::move(path)), findings_(findings) {}

  void error(std::string_view key, std::string problem, std::string advice);
  void warning(std::string_view key, std::string problem, std::string advice);
  /// About a key at a place of its own: one that isn't known, or that comes twice.
  void errorAt(Position at, std::string_view key, std::string problem, std::string advice);
  /// Whether the file gives this key.
  bool has(std::string_view key) const;

  void settle(std::string_view key) { settled_.emplace(key); }
  bool isSettled(std::string_view key) const;

  const LocatedValue& record() const { return record_; }

 private:
  std::string pathOf(std::string_view key) const;
  void add(Severity severity, std::string_view key, std::string problem, std::string advice);

  const LocatedValue& record_;
  std::string path_;
  Findings& findings_;
  std::set<std::string, std::less<>> settled_;
};

}  // namespace vorlu::ctl
