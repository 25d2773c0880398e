#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlu {

/// A word of a text and what stands for it.
struct PromptWord {
  std::string_view word;
  std::string value;
};

/// `text` with every occurrence of every word replaced, in the middle of other words too. Where two words begin at the
/// same place the longer one wins. What was put in is not looked at again.
std::string withWordsReplaced(std::string_view text, const std::vector<PromptWord>& words);

}  // namespace vorlu
