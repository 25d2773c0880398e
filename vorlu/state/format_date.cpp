#include "vorlu/state/format_date.h"

#include <cctype>

namespace vorlu {
namespace {

std::string_view pattern(DateForm form) {
  switch (form) {
    case DateForm::weekday:
      return "EEEEEEE";
    case DateForm::fullStamp:
      return "MMM dd YYYY HH:mm:ss Z";
    case DateForm::compactTime:
      return "HHmm";
    case DateForm::clockTime:
      return "HH:mm";
    case DateForm::longDate:
      return "EEEEEEE dd MMM YYYY HH:mm:ss";
    case DateForm::logLine:
      break;
  }
  return "EEEEEEE MMM dd HH:mm:ss";
}

}  // namespace

std::string capitalised(std::string_view text) {
  std::string result(text);
  bool inWord = false;
  for (char& c : result) {
    const auto byte = static_cast<unsigned char>(c);
    c = static_cast<char>(inWord ? std::tolower(byte) : std::toupper(byte));
    inWord = std::isspace(byte) == 0;
  }
  return result;
}

std::string formatDate(Clock& clock, Seconds when, DateForm form) {
  return capitalised(clock.format(when, pattern(form)));
}

}  // namespace vorlu
