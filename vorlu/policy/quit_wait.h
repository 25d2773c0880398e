#pragma once

#include <map>
#include <string>

namespace vorlu {

struct Vorlu;

/// Ids of the running processes by the names that `progress.processWatchList` holds, each as `pgrep` prints them.
using WatchedProcesses = std::map<std::string, std::string>;
WatchedProcesses watchedProcesses(Vorlu& vorlu);

/// The wait for the selected app, which was asked to quit and hasn't yet: at most 120 passes, one second apart. At some
/// of them the app is brought forward, with whatever dialog holds it open, and asked again; a process that has come
/// anew meanwhile is ended.
class QuitWait {
 public:
  enum class State { waiting, quit, hung };

  /// `before` are the processes before the app was asked to quit.
  QuitWait(Vorlu& vorlu, WatchedProcesses before) : vorlu_(vorlu), before_(std::move(before)) {}

  /// One pass, of about a second.
  State step();

 private:
  void bringForward();
  void endReplacement(const WatchedProcesses& processes);

  Vorlu& vorlu_;
  WatchedProcesses before_;
  int pass_ = 0;
};

}  // namespace vorlu
