#include "vorlu/prompts/progress_window.h"

#include <fmt/format.h>

#include <chrono>

#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/dialog_invocation.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::chrono::seconds timeToAppear{3};

ProgressWindow windowOf(const char* title, const char* message, const std::string& appName) {
  ProgressWindow window;
  window.title = withWordsReplaced(title, {{"{appName}", appName}});
  window.message = withWordsReplaced(message, {{"{appName}", appName}});
  return window;
}

DialogCommand commandOf(const ProgressWindow& window) {
  DialogCommand command;
  command.text("--title", window.title)
      .text("--message", window.message)
      .text("--icon", window.icon)
      .flag("--mini")
      .word("--quitkey", "u")
      .word("--iconsize", 60)
      .text("--titlefont", "size=14")
      .text("--messagefont", "size=10")
      .word("--progress", window.steps)
      .flag("--ignorednd");
  if (window.onTop) command.flag("--ontop");
  command.word("--position", window.position).flag("--moveable").text("--overlayicon", window.overlayIcon);
  return command;
}

}  // namespace

ProgressWindow updateProgressWindow(const std::string& appName) {
  return windowOf(texts::updatingTitle, texts::updating, appName);
}

ProgressWindow installProgressWindow(const std::string& appName) {
  ProgressWindow window = windowOf(texts::installingTitle, texts::installing, appName);
  window.onTop = true;
  return window;
}

void openProgressWindow(Vorlu& vorlu, const ProgressWindow& window) {
  if (!somebodyAtConsole(vorlu)) return;
  const std::string line = asConsoleUser(vorlu, commandOf(window).foregroundLine());
  vorlu.log(line, silent);
  notePrompt(vorlu);
  vorlu.platform.processes.launch(shellCommand(line));
  vorlu.platform.clock.sleep(timeToAppear);
}

void retitleProgressWindow(Vorlu& vorlu, const ProgressWindow& window) {
  writeDialogCommand(vorlu, fmt::format("title: {}", window.title));
  writeDialogCommand(vorlu, fmt::format("icon: {}", window.icon));
  writeDialogCommand(vorlu, fmt::format("message: {}", window.message));
}

void showProgressText(Vorlu& vorlu, const std::string& text) {
  writeDialogCommand(vorlu, fmt::format("progresstext: {}", text));
}

void closeProgressWindow(Vorlu& vorlu) {
  writeDialogCommand(vorlu, "progress: complete");
  writeDialogCommand(vorlu, "quit:");
}

}  // namespace vorlu
