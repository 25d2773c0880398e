#include "ctl/lint/finding.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vorlu::ctl {
namespace {

std::string_view nameOf(Severity severity) {
  return severity == Severity::error ? "error" : "warning";
}

std::size_t countOf(const std::vector<Finding>& findings, Severity severity) {
  return static_cast<std::size_t>(
      std::ranges::count_if(findings, [severity](const Finding& finding) { return finding.severity == severity; }));
}

std::string counted(std::size_t count, Severity severity) {
  return fmt::format("{} {}{}", count, nameOf(severity), count == 1 ? "" : "s");
}

/// A text of the file on one line of the terminal.
std::string onOneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7f)
      line += fmt::format("\\x{:02x}", byte);
    else
      line += c;
  }
  return line;
}

}  // namespace

void Findings::error(Position at, std::string path, std::string problem, std::string advice) {
  findings_.push_back({Severity::error, at, std::move(path), std::move(problem), std::move(advice)});
}

void Findings::warning(Position at, std::string path, std::string problem, std::string advice) {
  findings_.push_back({Severity::warning, at, std::move(path), std::move(problem), std::move(advice)});
}

bool Findings::hasErrors() const {
  return countOf(findings_, Severity::error) > 0;
}

const std::vector<Finding>& Findings::sorted() {
  std::ranges::stable_sort(findings_, {}, &Finding::at);
  return findings_;
}

std::string findingsAsText(std::string_view file, const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    const std::string place = finding.at.line == 0 ? "" : fmt::format(":{}:{}", finding.at.line, finding.at.column);
    const std::string key = finding.path.empty() ? "" : finding.path + ": ";
    text += onOneLine(fmt::format("{}{}: {}: {}{} — {}", file, place, nameOf(finding.severity), key, finding.problem,
                                  finding.advice)) +
            '\n';
  }
  if (findings.empty()) return fmt::format("{}: nothing found\n", file);
  return text + fmt::format("{}: {}, {}\n", file, counted(countOf(findings, Severity::error), Severity::error),
                            counted(countOf(findings, Severity::warning), Severity::warning));
}

std::string findingsAsJson(std::string_view file, const std::vector<Finding>& findings) {
  nlohmann::ordered_json records = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    nlohmann::ordered_json record{{"severity", nameOf(finding.severity)}, {"file", file}};
    if (finding.at.line != 0) record.update({{"line", finding.at.line}, {"column", finding.at.column}});
    record.update({{"path", finding.path}, {"problem", finding.problem}, {"advice", finding.advice}});
    records.push_back(std::move(record));
  }
  return records.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

}  // namespace vorlu::ctl
