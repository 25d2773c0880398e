#include "simulator/dialog/prompt.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace vorlu::simulator {

namespace {

constexpr int largestSize = 10000;     // points; what is beyond is a slip of the pen
constexpr double longestTimer = 1e9;   // seconds
constexpr int mostProgress = 1000000;  // steps

// The number in a text such as "12"; 0 when it holds none, or one that makes no size.
int sizeIn(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number > 0 && number <= largestSize ? number : 0;
}

// "size=12"; other words of a font, separated by commas, change nothing here.
int fontSizeIn(std::string_view text) {
  constexpr std::string_view key = "size=";
  const auto start = text.find(key);
  if (start == std::string_view::npos) return 0;
  const auto value = text.substr(start + key.size());
  return sizeIn(value.substr(0, value.find(',')));
}

std::string textOf(const nlohmann::json& row, const char* key) {
  const auto found = row.find(key);
  return found != row.end() && found->is_string() ? found->get<std::string>() : std::string();
}

// {"listitem": [{"title": …, "icon": …, "status": …, "statustext": …}]}; a row may be its title alone.
bool addRows(Prompt& prompt, const std::string& text) {
  const auto json = nlohmann::json::parse(text, nullptr, false);
  if (!json.is_object() || !json.contains("listitem") || !json["listitem"].is_array()) return false;
  for (const auto& row : json["listitem"]) {
    if (row.is_string()) prompt.rows.push_back({row.get<std::string>(), "", "", ""});
    if (!row.is_object()) continue;
    prompt.rows.push_back(
        {textOf(row, "title"), textOf(row, "icon"), textOf(row, "status"), textOf(row, "statustext")});
  }
  return true;
}

using Text = const std::string&;

struct Switch {
  std::string_view name;
  void (*apply)(Prompt&);
};
constexpr Switch switches[] = {
    {"--button1disabled", [](Prompt& prompt) { prompt.button1Disabled = true; }},
    {"--hidetimerbar", [](Prompt& prompt) { prompt.hideTimerBar = true; }},
    {"--ontop", [](Prompt& prompt) { prompt.onTop = true; }},
    {"--moveable", [](Prompt& prompt) { prompt.moveable = true; }},
    {"--mini", [](Prompt& prompt) { prompt.mini = true; }},
    {"--ignorednd", [](Prompt&) {}},  // nothing here keeps a prompt from being shown
};

// False when the value makes no sense.
struct Option {
  std::string_view name;
  bool (*apply)(Prompt&, Text);
};
constexpr Option options[] = {
    {"--commandfile", [](Prompt& prompt, Text value) { return prompt.commandFile = value, true; }},
    {"--title", [](Prompt& prompt, Text value) { return prompt.title = value, true; }},
    {"--message", [](Prompt& prompt, Text value) { return prompt.message = value, true; }},
    {"--icon", [](Prompt& prompt, Text value) { return prompt.icon = value, true; }},
    {"--overlayicon", [](Prompt& prompt, Text value) { return prompt.overlayIcon = value, true; }},
    {"--button1text", [](Prompt& prompt, Text value) { return prompt.button1 = value, true; }},
    {"--button2text", [](Prompt& prompt, Text value) { return prompt.button2 = value, true; }},
    {"--position", [](Prompt& prompt, Text value) { return prompt.position = value, true; }},
    {"--iconsize", [](Prompt& prompt, Text value) { return (prompt.iconSize = sizeIn(value)) > 0; }},
    {"--width", [](Prompt& prompt, Text value) { return (prompt.width = sizeIn(value)) > 0; }},
    {"--height", [](Prompt& prompt, Text value) { return (prompt.height = sizeIn(value)) > 0; }},
    {"--titlefont", [](Prompt& prompt, Text value) { return (prompt.titleSize = fontSizeIn(value)) > 0; }},
    {"--messagefont", [](Prompt& prompt, Text value) { return (prompt.messageSize = fontSizeIn(value)) > 0; }},
    {"--listitem",
     [](Prompt& prompt, Text value) {
       return prompt.rows.push_back({value, "", "", ""}), true;
     }},
    {"--jsonstring", [](Prompt& prompt, Text value) { return addRows(prompt, value); }},
    {"--timer",
     [](Prompt& prompt, Text value) {
       const double seconds = std::atof(value.c_str());
       prompt.timer = seconds > 0 ? std::min(seconds, longestTimer) : 0;
       return prompt.timer > 0;
     }},
    {"--progress",
     [](Prompt& prompt, Text value) {
       prompt.progressSteps = std::clamp(std::atoi(value.c_str()), 0, mostProgress);
       return *prompt.progressSteps > 0;
     }},
    {"--quitkey",
     [](Prompt& prompt, Text value) {
       if (value.size() == 1) prompt.quitKey = value[0];
       return value.size() == 1;
     }},
};

template <typename Flag, std::size_t count>
const Flag* named(const Flag (&flags)[count], const std::string& name) {
  const auto* found = std::find_if(std::begin(flags), std::end(flags), [&](const Flag& f) { return f.name == name; });
  return found != std::end(flags) ? found : nullptr;
}

}  // namespace

Prompt parsePrompt(const std::vector<std::string>& arguments, std::vector<std::string>& complaints) {
  Prompt prompt;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (const Switch* flag = named(switches, name)) {
      flag->apply(prompt);
    } else if (const Option* option = named(options, name); option == nullptr) {
      complaints.push_back("ignored " + name);
    } else if (i + 1 == arguments.size()) {
      complaints.push_back(name + " has no value");
    } else if (const std::string& value = arguments[++i]; !option->apply(prompt, value)) {
      complaints.push_back(name + " can't be " + (value.empty() ? "empty" : value.substr(0, 80)));
    }
  }
  return prompt;
}

}  // namespace vorlu::simulator
