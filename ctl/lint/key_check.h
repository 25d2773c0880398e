#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ctl/lint/record_lint.h"
#include "vorlu/state/key_reference.h"

namespace vorlu::ctl {

/// Checks what a file gives against the table of all keys that there are.
class KeyCheck {
 public:
  /// `ifUnreadable` tells what comes of a wrong type.
  KeyCheck(std::vector<KeyReference> keys, std::string ifUnreadable);
  KeyCheck(const KeyCheck&) = delete;

  /// Unknown keys, wrong types, and values outside their choices or range. Values of a wrong type become null, so that
  /// the rest of the record can be decoded, and faulty keys are settled.
  void check(LocatedValue& record, RecordLint& lint) const;

 private:
  void checkSection(LocatedValue& value, const std::string& section, RecordLint& lint) const;
  void checkUnknown(const LocatedMember& member, const std::string& section, RecordLint& lint) const;
  bool hasRightType(const LocatedValue& value, const KeyReference& key, RecordLint& lint) const;
  void checkValue(const LocatedValue& value, const KeyReference& key, RecordLint& lint) const;

  std::vector<KeyReference> keys_;
  std::string ifUnreadable_;
  std::unordered_map<std::string_view, const KeyReference*> byPath_;
};

}  // namespace vorlu::ctl
