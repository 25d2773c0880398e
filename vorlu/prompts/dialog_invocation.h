#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vorlu {

struct Vorlu;

/// One invocation of `Dialog`: its flags in order, built from typed parts. Values are escaped, so that the tool
/// receives each of them as it is, whatever it holds. The two characters `\n` of a text reach the tool as they are: it
/// reads them as a line break.
class DialogCommand {
 public:
  DialogCommand& flag(std::string_view name);                          ///< --ontop
  DialogCommand& text(std::string_view name, std::string_view value);  ///< --title "Value"
  DialogCommand& text(std::string_view name, std::int64_t value);      ///< --iconsize "80"
  DialogCommand& word(std::string_view name, std::string_view value);  ///< --quitkey u
  DialogCommand& word(std::string_view name, std::int64_t value);      ///< --height 185
  /// --jsonstring with a document in single quotes.
  DialogCommand& json(std::string_view document);
  /// --timer "seconds". The prompt is killed when it stays two minutes longer.
  DialogCommand& timer(std::int64_t seconds);

  /// `"{program}" --commandfile {file} {flags}`, which every form below begins with.
  std::string line() const;
  /// The exit code comes last on standard output.
  std::string foregroundLine() const;
  /// The exit code goes into a file.
  std::string backgroundLine(std::string_view receiptPath) const;

  std::optional<std::int64_t> timerSeconds() const { return timer_; }

 private:
  std::string flags_;
  std::optional<std::int64_t> timer_;
};

enum class PromptAnswer {
  button1,           ///< "0": Update, Done, Ok, Yes
  button2,           ///< "2": Defer, Skip, No
  timerRanOut,       ///< "4"
  quitUnexpectedly,  ///< any other text, the empty one of a prompt that was killed included
};

struct PromptExit {
  PromptAnswer answer = PromptAnswer::quitUnexpectedly;
  std::string text;  ///< the exit code as the shell printed it, without blanks around it
};

/// The meaning of what a prompt's shell printed. Text that isn't UTF-8 counts as none.
PromptExit readPromptExit(std::string_view output);

/// Who brings a prompt back to the front while it waits for the user.
enum class ForegroundRefresh {
  none,
  everyMinute,  ///< the agent, after one second and then at each full minute, each with a line in the log
};

/// Shows a prompt and waits for its end. A prompt without a timer has no limit; one that outlives its timer by two
/// minutes is killed and counts as quit unexpectedly.
PromptExit runDialogCommand(Vorlu& vorlu, const DialogCommand& command,
                            ForegroundRefresh refresh = ForegroundRefresh::none);

/// Shows a prompt whose answer means nothing and waits for its end.
void runUnansweredPrompt(Vorlu& vorlu, const DialogCommand& command);

/// Shows a prompt that lives on by itself, beyond the agent's end. Its answer isn't read. Gives the process that ends
/// with the prompt, nothing when it couldn't be started.
std::optional<pid_t> launchPrompt(Vorlu& vorlu, const DialogCommand& command);

/// Closes every prompt, whatever its command file says.
void killPrompts(Vorlu& vorlu);

}  // namespace vorlu
