#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorlu::simulator {

/// One row of a prompt's list.
struct ListRow {
  std::string title;
  std::string icon;        ///< path; empty for none
  std::string status;      ///< wait, success, fail, pending, error; any other shows no sign
  std::string statusText;  ///< beside the sign
};

/// A prompt as its command line asks for it. Texts are UTF-8 as they came; sizes are the Mac's points. 0 is "not
/// given".
struct Prompt {
  std::string commandFile;
  std::string title;
  std::string message;  ///< Markdown; a new line may stand as the two characters \n
  std::string icon;
  std::string overlayIcon;
  std::optional<std::string> button1;
  std::optional<std::string> button2;
  bool button1Disabled = false;
  double timer = 0;  ///< seconds
  bool hideTimerBar = false;
  std::string position;
  bool onTop = false;
  bool moveable = false;
  bool mini = false;
  char quitKey = 'q';  ///< with Command or Control
  int width = 0;
  int height = 0;
  int iconSize = 0;
  int titleSize = 0;
  int messageSize = 0;
  std::optional<int> progressSteps;  ///< a progress bar with this maximum
  std::vector<ListRow> rows;

  bool canBeAnswered() const { return (button1 && !button1Disabled) || button2; }
};

/// Reads a command line. What isn't understood is left out and described in `complaints`; nothing else comes of it.
Prompt parsePrompt(const std::vector<std::string>& arguments, std::vector<std::string>& complaints);

}  // namespace vorlu::simulator
