#pragma once

#include <string>
#include <vector>

namespace vorlu {

struct Vorlu;

/// The volumes that one install has attached. What is attached still at the end of the scope is detached, so that an
/// install which fails or is cut short leaves none behind.
class AttachedImages {
 public:
  explicit AttachedImages(Vorlu& vorlu) : vorlu_(vorlu) {}
  AttachedImages(const AttachedImages&) = delete;
  AttachedImages& operator=(const AttachedImages&) = delete;
  ~AttachedImages() { detachAll(); }

  void add(const std::string& mountPoint) { mountPoints_.push_back(mountPoint); }
  bool empty() const { return mountPoints_.empty(); }
  /// The last one first.
  void detachAll();
  /// Detaches the last one alone; those before it stay when the scope ends.
  void detachLast();

 private:
  Vorlu& vorlu_;
  std::vector<std::string> mountPoints_;
};

}  // namespace vorlu
