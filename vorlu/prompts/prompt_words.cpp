#include "vorlu/prompts/prompt_words.h"

namespace vorlu {
namespace {

const PromptWord* longestAt(std::string_view rest, const std::vector<PromptWord>& words) {
  const PromptWord* longest = nullptr;
  for (const PromptWord& word : words)
    if (rest.starts_with(word.word) && (!longest || word.word.size() > longest->word.size())) longest = &word;
  return longest;
}

}  // namespace

std::string withWordsReplaced(std::string_view text, const std::vector<PromptWord>& words) {
  std::string replaced;
  while (!text.empty()) {
    if (const PromptWord* word = longestAt(text, words)) {
      replaced += word->value;
      text.remove_prefix(word->word.size());
    } else {
      replaced += text.front();
      text.remove_prefix(1);
    }
  }
  return replaced;
}

}  // namespace vorlu
