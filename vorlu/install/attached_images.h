#pragma once

#include <string>
#include <vector>

#include "vorlu/state/work_notes.h"

namespace vorlu {

struct Vorlu;

/// The volumes that one install has attached. What is attached still at the end of the scope is detached, so that an
/// install which fails or is cut short leaves none behind.
///
/// A note in the run directory names the images, so that the next run detaches them when this one is killed.
class AttachedImages {
 public:
  static constexpr const char* noteKind = "images";

  explicit AttachedImages(Vorlu& vorlu);
  AttachedImages(const AttachedImages&) = delete;
  AttachedImages& operator=(const AttachedImages&) = delete;
  ~AttachedImages() { detachAll(); }

  /// The image at this path is about to be attached.
  void announce(const std::string& imagePath);
  void add(const std::string& mountPoint) { mountPoints_.push_back(mountPoint); }
  bool empty() const { return mountPoints_.empty(); }
  /// The last one first.
  void detachAll();
  /// Detaches the last one alone; those before it stay when the scope ends.
  void detachLast();

 private:
  void detach(const std::string& mountPoint);
  void forgetNote();

  Vorlu& vorlu_;
  std::vector<std::string> mountPoints_;
  WorkNote note_;
  bool allDetached_ = true;
};

/// Detaches what the installs of killed runs have left attached. What refuses stays noted for the run after this.
void recoverImages(Vorlu& vorlu);

}  // namespace vorlu
