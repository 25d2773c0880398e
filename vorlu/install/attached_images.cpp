#include "vorlu/install/attached_images.h"

#include <fmt/format.h>

#include <sstream>

#include "vorlu/install/disk_image.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

/// Whether a name can be a line of a note: one with a break, as an archive may have it, would be two names.
bool isLine(const std::string& path) {
  return path.find('\n') == std::string::npos;
}

}  // namespace

AttachedImages::AttachedImages(Vorlu& vorlu) : vorlu_(vorlu), note_{noteKind, vorlu.platform.processes.ownPid(), ""} {}

void AttachedImages::announce(const std::string& imagePath) {
  if (!isLine(imagePath)) return;
  note_.text += imagePath + "\n";
  // Without it the install goes on: only a kill would leave the volume.
  static_cast<void>(note_.write(vorlu_.platform.files));
}

void AttachedImages::detachAll() {
  while (!mountPoints_.empty()) {
    const std::string mountPoint = std::move(mountPoints_.back());
    mountPoints_.pop_back();
    detach(mountPoint);
  }
  forgetNote();
}

void AttachedImages::detachLast() {
  if (mountPoints_.empty()) return;
  const std::string mountPoint = std::move(mountPoints_.back());
  mountPoints_.clear();
  detach(mountPoint);
  forgetNote();
}

/// A volume that refuses is noted by its name: its image may be gone when the next run comes.
void AttachedImages::detach(const std::string& mountPoint) {
  if (detachImage(vorlu_, mountPoint)) return;
  allDetached_ = false;
  announce(mountPoint);
}

void AttachedImages::forgetNote() {
  if (note_.text.empty() || !allDetached_) return;
  note_.text.clear();
  static_cast<void>(note_.remove(vorlu_.platform.files));
}

void recoverImages(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  for (const WorkNote& note : notesOfEndedRuns(vorlu, AttachedImages::noteKind)) {
    WorkNote rest{note.kind, note.owner};
    std::istringstream images(note.text);
    for (std::string image; std::getline(images, image);) {
      if (!files.exists(image)) continue;
      vorlu.log(fmt::format("Detaching the disk image {} of an unfinished installation", image), silent);
      const std::string volume = files.isDirectory(image) ? image : volumeOf(vorlu, image);
      if (!volume.empty() && !detachImage(vorlu, volume)) rest.text += (isLine(volume) ? volume : image) + "\n";
    }
    static_cast<void>(rest.text.empty() ? rest.remove(files) : rest.write(files));
  }
}

}  // namespace vorlu
