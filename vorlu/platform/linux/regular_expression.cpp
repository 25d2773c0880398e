#include "vorlu/platform/regular_expression.h"

#include <fmt/format.h>
#include <unicode/regex.h>

namespace vorlu {
namespace {

/// Steps of ICU's matcher, of about a millisecond each.
constexpr int matchTimeLimit = 5000;

icu::UnicodeString fromUtf8(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int>(text.size())));
}

}  // namespace

struct RegularExpression::Pattern {
  std::unique_ptr<icu::RegexPattern> compiled;
};

RegularExpression::RegularExpression(std::unique_ptr<Pattern> pattern) : pattern_(std::move(pattern)) {}
RegularExpression::RegularExpression(RegularExpression&&) noexcept = default;
RegularExpression& RegularExpression::operator=(RegularExpression&&) noexcept = default;
RegularExpression::~RegularExpression() = default;

Result<RegularExpression> RegularExpression::compile(std::string_view pattern) {
  UErrorCode status = U_ZERO_ERROR;
  UParseError place{};
  auto made = std::make_unique<Pattern>();
  made->compiled.reset(icu::RegexPattern::compile(fromUtf8(pattern), 0, place, status));
  if (U_FAILURE(status))
    return Failure{fmt::format("{}: {} at character {}", pattern, u_errorName(status), place.offset),
                   static_cast<int>(status)};
  return RegularExpression(std::move(made));
}

std::optional<std::string> RegularExpression::firstMatch(std::string_view text) const {
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString subject = fromUtf8(text);
  const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->compiled->matcher(subject, status));
  if (U_FAILURE(status)) return std::nullopt;
  matcher->setTimeLimit(matchTimeLimit, status);
  if (!matcher->find(status) || U_FAILURE(status)) return std::nullopt;
  std::string match;
  matcher->group(status).toUTF8String(match);
  return U_SUCCESS(status) ? std::optional(match) : std::nullopt;
}

}  // namespace vorlu
