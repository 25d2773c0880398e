#pragma once

#include <string>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

/// The folder beside a target in which a new item is made ready, closed to users. Its name holds no letter or digit, so
/// that no search for a part of an app's name finds it. A note in the run directory leads the next run to it when this
/// one is killed. At the end of the scope the folder is gone, and an item that stood aside is back if its place is
/// empty.
class Staging {
 public:
  Staging(FileManager& files, std::string directory) : files_(files), directory_(std::move(directory)) {}
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

  /// The directory that a killed run worked in, empty when there is none.
  static std::string interrupted(FileManager& files);

  /// Puts back what stands aside and has an empty place, removes the folder, and then the note.
  Status settle();

 private:
  std::string folder() const;

  FileManager& files_;
  std::string directory_;
};

}  // namespace vorlu
