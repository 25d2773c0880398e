#include "vorlu/install/preparation.h"

#include <fmt/format.h>

#include "vorlu/install/archive.h"
#include "vorlu/install/disk_image.h"
#include "vorlu/install/find_item.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

using FailureOrNothing = std::optional<InstallFailure>;

constexpr std::chrono::seconds settlingTime{2};   // until a converted image can be attached
constexpr std::chrono::seconds secondChance{10};  // before another attempt to attach it
constexpr int convertedMountAttempts = 3;

/// Attaches an image, after the conversion of one with a licence. An image that can't be attached isn't the end yet.
FailureOrNothing openImage(InstallJob& job, std::string path) {
  Vorlu& vorlu = job.vorlu;
  Clock& clock = vorlu.platform.clock;
  if (job.type->licence) {
    if (!convertImage(vorlu, path)) return InstallFailure::conversion;
    path = vorlu.progress.convertedImagePath;
    clock.sleep(settlingTime);
  }
  job.images.announce(path);
  const int attempts = job.type->licence ? convertedMountAttempts : 1;
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    if (attempt > 1) clock.sleep(secondChance);
    if (!mountImage(vorlu, path, job.anyProgress())) continue;
    job.images.add(vorlu.progress.mountPoint);
    break;
  }
  return std::nullopt;
}

bool openNestedArchives(InstallJob& job) {
  for (const std::string& item : job.vorlu.currentApp.nestedDownloadFiles) {
    job.vorlu.log(fmt::format("Extracting {}...", item));
    if (!extractNestedArchive(job.vorlu, item, job.anyProgress())) return false;
  }
  return true;
}

/// Whether a refused archive couldn't be removed whole: what is left of it is no installer.
bool leavesParts(InstallJob& job) {
  const auto names = job.vorlu.platform.files.list(paths::output);
  return names && !names->empty();
}

FailureOrNothing openNestedImages(InstallJob& job) {
  const std::vector<std::string>& items = job.vorlu.currentApp.nestedDownloadFiles;
  for (auto item = items.begin(); item != items.end(); ++item) {
    const std::string found = findItem(job.vorlu, paths::output, *item);
    if (!found.empty()) {
      if (const auto failure = openImage(job, fmt::format("{}/{}", paths::output, found))) return failure;
    } else if (item + 1 == items.end()) {
      return InstallFailure::nestedItem;
    }
  }
  return std::nullopt;
}

/// Packages have no steps of the bar while they are unpacked.
void tickUnlessPackages(InstallJob& job) {
  if (job.type->method == InstallMethod::copySourceItems) tick(job);
}

}  // namespace

FailureOrNothing openInstaller(InstallJob& job) {
  const DownloadType& type = *job.type;
  FailureOrNothing failure;
  if (type.outer == Container::image) failure = openImage(job, job.filePath);
  if (failure) return failure;

  job.vorlu.log(fmt::format("Extracting {}...", job.fileName));
  if (type.outer == Container::archive) {
    const bool opened = extractArchive(job.vorlu, job.filePath, job.anyProgress()) &&
                        (type.inner != Container::archive || openNestedArchives(job));
    if (!opened && leavesParts(job)) return InstallFailure::sourceItem;
  }
  tickUnlessPackages(job);

  if (type.inner == Container::image) failure = openNestedImages(job);
  if (failure) return failure;
  tickUnlessPackages(job);

  if (type.isDiskImage() && job.vorlu.progress.mountPoint.empty()) return InstallFailure::mount;
  tickUnlessPackages(job);
  return std::nullopt;
}

}  // namespace vorlu
