#include "vorlu/state/replacement.h"

namespace vorlu {

std::string replacedAll(std::string_view text, std::string_view part, std::string_view by) {
  std::string result;
  std::size_t from = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, from)) {
    result.append(text.substr(from, at - from)).append(by);
    from = at + part.size();
  }
  return result.append(text.substr(from));
}

}  // namespace vorlu
