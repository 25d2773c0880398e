#include "ctl/lint/record_lint.h"

namespace vorlu::ctl {

void RecordLint::error(std::string_view key, std::string problem, std::string advice) {
  add(Severity::error, key, std::move(problem), std::move(advice));
}

void RecordLint::warning(std::string_view key, std::string problem, std::string advice) {
  add(Severity::warning, key, std::move(problem), std::move(advice));
}

void RecordLint::errorAt(Position at, std::string_view key, std::string problem, std::string advice) {
  findings_.error(at, pathOf(key), std::move(problem), std::move(advice));
}

bool RecordLint::has(std::string_view key) const {
  const std::size_t dot = key.rfind('.');
  const LocatedValue& parent = dot == std::string_view::npos ? record_ : locate(record_, key.substr(0, dot));
  const LocatedValue* value = parent.find(dot == std::string_view::npos ? key : key.substr(dot + 1));
  return value != nullptr && value->kind != NodeKind::null;
}

bool RecordLint::isSettled(std::string_view key) const {
  // A finding about an element is one about its list, too.
  return settled_.contains(key) || settled_.contains(key.substr(0, key.find('[')));
}

std::string RecordLint::pathOf(std::string_view key) const {
  return key.empty() ? path_ : memberPath(path_, key);
}

void RecordLint::add(Severity severity, std::string_view key, std::string problem, std::string advice) {
  if (isSettled(key)) return;
  const Position at = locate(record_, key).at;
  if (severity == Severity::error)
    findings_.error(at, pathOf(key), std::move(problem), std::move(advice));
  else
    findings_.warning(at, pathOf(key), std::move(problem), std::move(advice));
}

}  // namespace vorlu::ctl
