#include "vorlu/prompts/self_service.h"

#include <algorithm>
#include <array>

#include "vorlu/platform/file_manager.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"

namespace vorlu {
namespace {

/// What Jamf's preferences say of the installed Self Service applications.
struct SelfServiceIcon {
  std::optional<std::string> self_service_app_path;
  std::optional<std::string> self_service_plus_path;
  static constexpr auto fields() {
    return std::array{field<&SelfServiceIcon::self_service_app_path>("self_service_app_path"),
                      field<&SelfServiceIcon::self_service_plus_path>("self_service_plus_path")};
  }
};

constexpr std::ptrdiff_t longestName = 12;  ///< characters that a sentence has room for

std::string applicationName(std::string path) {
  constexpr std::string_view ending = ".app";
  while (path.ends_with('/')) path.pop_back();
  path.erase(0, path.rfind('/') + 1);
  if (path.ends_with(ending)) path.resize(path.size() - ending.size());
  return path;
}

std::ptrdiff_t characters(std::string_view text) {
  return std::count_if(text.begin(), text.end(),
                       [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
}

}  // namespace

std::optional<std::string> selfServiceName(FileManager& files) {
  if (!files.exists(paths::jamf)) return std::nullopt;
  const auto bytes = files.read(paths::jamfPreferences);
  if (!bytes) return std::nullopt;
  const auto preferences = decodePropertyList<SelfServiceIcon>(*bytes);
  if (!preferences) return std::nullopt;
  for (const auto& path : {preferences->self_service_plus_path, preferences->self_service_app_path}) {
    const std::string name = applicationName(path.value_or(""));
    if (!name.empty()) return name;
  }
  return std::nullopt;
}

Advice adviceSentences(const std::optional<std::string>& selfService) {
  if (!selfService) return {texts::manyAppsAdvice, texts::oneAppAdvice, texts::shortAdvice};
  const std::vector<PromptWord> words = {
      {"{selfService}", characters(*selfService) <= longestName ? *selfService : "Self Service"}};
  return {withWordsReplaced(texts::manyAppsSelfServiceAdvice, words),
          withWordsReplaced(texts::oneAppSelfServiceAdvice, words),
          withWordsReplaced(texts::shortSelfServiceAdvice, words)};
}

}  // namespace vorlu
