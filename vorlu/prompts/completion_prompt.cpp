#include "vorlu/prompts/completion_prompt.h"

#include <fmt/format.h>

#include <chrono>
#include <optional>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/prompts/console_session.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_texts.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using std::chrono::seconds;

constexpr int longestPoll = 20;  ///< times, one second apart

/// The text of a receipt that has come since `before` was there; nothing while none is complete.
std::optional<std::string> takeReceipt(Vorlu& vorlu, const std::optional<FileInfo>& before) {
  FileManager& files = vorlu.platform.files;
  const auto info = files.info(paths::completeResult);
  if (!info || info == before) return std::nullopt;
  Result<std::string> text = files.read(paths::completeResult);
  if (text && !isUtf8(*text)) text = Failure{paths::completeResult + " is not UTF-8 text"};
  if (!text) vorlu.log(fmt::format("Error reading complete prompt receipt: {}", text.error()));
  if (text && trimmed(*text).empty()) return std::nullopt;  // the shell has made it and not written yet
  removeCompleteReceipt(vorlu);
  return text ? *text : "";
}

DialogCommand smallPrompt() {
  DialogCommand command;
  command.flag("--mini").flag("--ontop");
  return command;
}

DialogCommand& addCommonFlags(DialogCommand& command, const std::string& position) {
  return command.word("--position", position).flag("--moveable").word("--quitkey", "u").flag("--ignorednd");
}

/// The ends that both forms share.
void logEnd(Vorlu& vorlu, const PromptExit& end) {
  if (end.answer == PromptAnswer::timerRanOut)
    vorlu.log("The complete prompt timer ran out");
  else if (end.answer == PromptAnswer::button2)
    vorlu.log("User clicked No. Skipping App launch...");
  else if (end.answer == PromptAnswer::quitUnexpectedly)
    vorlu.log(fmt::format("The complete prompt quit unexpectedly. Exit code: {}", end.text));
}

}  // namespace

void removeCompleteReceipt(Vorlu& vorlu) {
  if (!vorlu.platform.files.exists(paths::completeResult)) return;
  const Status removed = vorlu.platform.files.remove(paths::completeResult);
  if (!removed) vorlu.log(fmt::format("Unable to remove complete prompt receipt. Error: {}", removed.error()));
}

PromptExit runCompletePrompt(Vorlu& vorlu, const DialogCommand& command) {
  const auto before = vorlu.platform.files.info(paths::completeResult);  // one that couldn't be removed
  vorlu.platform.processes.launch(shellCommand(command.backgroundLine(paths::completeResult)));
  for (int poll = 0; poll < longestPoll; ++poll) {
    vorlu.platform.clock.sleep(seconds(1));
    if (const auto text = takeReceipt(vorlu, before)) return readPromptExit(*text);
  }
  killPrompts(vorlu);
  vorlu.platform.clock.sleep(seconds(1));  // the shell of a killed prompt writes its receipt
  removeCompleteReceipt(vorlu);
  return readPromptExit("4");
}

void showCompletePrompt(Vorlu& vorlu, const InstallCompletePrompt& prompt) {
  removeCompleteReceipt(vorlu);
  vorlu.log(fmt::format("Displaying install success message to the user. Asking if {} should be launched...",
                        prompt.appName));
  killPrompts(vorlu);
  DialogCommand command = smallPrompt();
  const std::string overlay = successIcon(vorlu);
  if (!overlay.empty()) command.text("--overlayicon", overlay);
  addCommonFlags(command, prompt.position)
      .text("--title", texts::installCompleteTitle)
      .text("--icon", prompt.icon)
      .text("--message", withWordsReplaced(texts::installComplete, {{"{appName}", prompt.appName}}))
      .text("--button1text", texts::yes)
      .text("--button2text", texts::no);
  const PromptExit end = runCompletePrompt(vorlu, command);
  if (end.answer != PromptAnswer::button1) return logEnd(vorlu, end);
  vorlu.log(fmt::format("User clicked Yes. Launching {}...", prompt.appName));
  openAsConsoleUser(vorlu, "-a ", prompt.installedPath);
}

void showCompletePrompt(Vorlu& vorlu, const UpdateCompletePrompt& prompt) {
  removeCompleteReceipt(vorlu);
  vorlu.log("Displaying update success message to the user...");
  killPrompts(vorlu);
  DialogCommand command = smallPrompt();
  addCommonFlags(command, prompt.position)
      .text("--title", texts::upToDateTitle)
      .text("--icon", prompt.icon)
      .text("--message", prompt.message)
      .text("--button1text", texts::ok);
  const PromptExit end = runCompletePrompt(vorlu, command);
  if (end.answer != PromptAnswer::button1) return logEnd(vorlu, end);
  vorlu.log("User acknowledged update complete prompt");
}

}  // namespace vorlu
