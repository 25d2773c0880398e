#pragma once

#include <string>

namespace vorlu {

struct Vorlu;

/// The small window that shows an update or install at work, in the console user's session.
struct ProgressWindow {
  std::string title;
  std::string message;
  std::string icon;
  std::string overlayIcon;  ///< empty for none
  std::string position;     ///< validated
  int steps = 0;            ///< where the bar is full
  bool onTop = false;
};

/// The window of an update run; `title` is "Updating {appName}" or the selected app's `progressTitle`.
ProgressWindow updateProgressWindow(const std::string& appName);
/// The window of an install, always on top.
ProgressWindow installProgressWindow(const std::string& appName);

/// Opens the window, without waiting for its end, and gives it three seconds to appear. Its command line is logged for
/// the file alone. It lives beyond the agent's end, until "quit:" comes. With nobody at the console no window opens.
void openProgressWindow(Vorlu& vorlu, const ProgressWindow& window);

/// Lines to the window that is open.
void retitleProgressWindow(Vorlu& vorlu, const ProgressWindow& window);  ///< title, icon and message anew
void showProgressText(Vorlu& vorlu, const std::string& text);            ///< "progresstext: {text}"
void closeProgressWindow(Vorlu& vorlu);                                  ///< "progress: complete", "quit:"

}  // namespace vorlu
