#include "vorlu/install/attached_images.h"

#include "vorlu/install/disk_image.h"

namespace vorlu {

void AttachedImages::detachAll() {
  while (!mountPoints_.empty()) {
    const std::string mountPoint = std::move(mountPoints_.back());
    mountPoints_.pop_back();
    detachImage(vorlu_, mountPoint);
  }
}

void AttachedImages::detachLast() {
  if (mountPoints_.empty()) return;
  const std::string mountPoint = std::move(mountPoints_.back());
  mountPoints_.clear();
  detachImage(vorlu_, mountPoint);
}

}  // namespace vorlu
