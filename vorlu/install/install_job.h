#pragma once

#include <optional>
#include <string>

#include "vorlu/detection/processor.h"
#include "vorlu/install/attached_images.h"
#include "vorlu/install/disk_space.h"
#include "vorlu/install/download_type.h"
#include "vorlu/install/pipeline.h"
#include "vorlu/install/verification.h"

namespace vorlu {

/// One run of the pipeline: what its stages hand on.
struct InstallJob {
  InstallJob(Vorlu& run, const InstallRequest& asked) : vorlu(run), request(asked), images(run) {}

  Vorlu& vorlu;
  const InstallRequest& request;
  Processor processor = Processor::unknown;
  std::string os;                      ///< macOS version
  std::string serverName;              ///< names the app among those that failed
  const DownloadType* type = nullptr;  ///< nothing for an unknown type
  std::string fileName;                ///< of the download in the cache
  std::string filePath;
  DiskSpace space;
  std::optional<FileDigest> digest;  ///< of a file that this run has downloaded
  HashCheck hash;                    ///< the last hash check
  AttachedImages images;             ///< volumes to detach
  bool wasRunning = false;           ///< it goes on running while it is updated
  bool checkFailed = false;          ///< the version after the install isn't a new one

  /// Folder below which the items to install lie.
  std::string searchRoot() const;
  bool anyProgress() const { return request.interactive || request.writeProgress; }
};

/// Moves the progress bar by one, where there is one.
void tick(InstallJob& job);
/// Text below the bar of an install window.
void progressText(InstallJob& job, const std::string& text);

}  // namespace vorlu
