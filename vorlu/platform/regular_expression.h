#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/result.h"

namespace vorlu {

/// NSRegularExpression with default options, which is ICU's engine. Texts are UTF-8.
class RegularExpression {
 public:
  /// A pattern that doesn't compile is a failure that names its fault.
  static Result<RegularExpression> compile(std::string_view pattern);
  RegularExpression(RegularExpression&&) noexcept;
  RegularExpression& operator=(RegularExpression&&) noexcept;
  ~RegularExpression();

  /// The whole text of the first match, anywhere in `text`. A match that runs away counts as none.
  std::optional<std::string> firstMatch(std::string_view text) const;

 private:
  struct Pattern;
  explicit RegularExpression(std::unique_ptr<Pattern> pattern);
  std::unique_ptr<Pattern> pattern_;
};

}  // namespace vorlu
