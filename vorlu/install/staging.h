#pragma once

#include <string>

#include "vorlu/platform/file_manager.h"
#include "vorlu/state/work_notes.h"

namespace vorlu {

/// The folder beside a target in which a process makes a new item ready, closed to users. Its name is the process's own
/// and holds no letter or digit, so that no search for a part of an app's name finds it. A note in the run directory
/// leads the next run to it when this one is killed. At the end of the scope the folder is gone, and an item that stood
/// aside is back if its place is empty.
class Staging {
 public:
  static constexpr const char* noteKind = "placement";

  Staging(FileManager& files, std::string directory, pid_t owner)
      : files_(files), directory_(std::move(directory)), note_{noteKind, owner, directory_} {}
  ~Staging();
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;

  /// Settles what an earlier run left here, and makes the folder.
  Status open();
  /// Where the new item of this name is made ready.
  std::string freshPath(const std::string& name) const;
  /// Moves the present item of this name out of its place.
  Status stepAside(const std::string& name);
  /// Flushes all of it to the disk.
  Status sync();

  /// Puts back what stands aside and has an empty place, removes the folder, and then the note.
  Status settle();

  std::string folder() const;

 private:
  FileManager& files_;
  std::string directory_;
  WorkNote note_;
};

}  // namespace vorlu
