#include "vorlu/install/disk_image.h"

#include <fmt/format.h>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/install/line_reader.h"
#include "vorlu/install/ticker.h"
#include "vorlu/state/replacement.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::string_view volumes = "/Volumes";

/// An image that is being attached must be known to be detached; a stop of the agent waits so long for either.
constexpr std::chrono::seconds mountGrace{10};

ProcessResult hdiutil(Vorlu& vorlu, std::vector<std::string> arguments, std::chrono::seconds grace) {
  Command command;
  command.program = "/usr/bin/hdiutil";
  command.arguments = std::move(arguments);
  command.grace = grace;
  return runTool(vorlu.platform.processes, vorlu.log, command);
}

/// The first volume that the tool says it has attached; empty when there is none. A tool that failed says nothing of
/// that: a licence, which is shown first, may hold any text.
std::string volumeIn(FileManager& files, const ProcessResult& result) {
  std::string_view output = result.output;
  const std::size_t start = output.find(volumes);
  if (result.status != 0 || start == std::string_view::npos) return {};
  // A name may hold anything but a slash, with which the next line begins.
  std::string_view whole = output.substr(start, output.find('/', start + volumes.size() + 1) - start);
  if (whole.ends_with('\n')) whole.remove_suffix(1);
  if (whole.size() > volumes.size() + 1 && files.isDirectory(std::string(whole))) return std::string(whole);
  output.remove_prefix(start + volumes.size());
  const std::string_view name = output.substr(0, std::min(output.find(volumes), output.find('\n')));
  return trimmed(name).size() > 1 && name.starts_with('/') ? fmt::format("{}{}", volumes, trimmed(name))
                                                           : std::string();
}

void reportMountFailure(Vorlu& vorlu, const std::string& output) {
  constexpr std::string_view attachFailed = "hdiutil: attach failed";
  bool told = false;
  LineReader lines([&](std::string_view line) {
    if (line.find(attachFailed) == std::string_view::npos) return;
    vorlu.log(replacedAll(trimmed(line), "hdiutil: a", "Error mounting disk image: A"));
    told = true;
  });
  lines.feed(output);
  lines.finish();
  if (const std::string text = trimmed(output); !told && !text.empty()) vorlu.log(text);
  vorlu.log("Please ensure disk image mounting is not restricted and try again");
}

void attach(Vorlu& vorlu, const std::string& path) {
  vorlu.log("Mounting disk image...");
  const ProcessResult result = hdiutil(vorlu, {"attach", "-nobrowse", path}, mountGrace);
  vorlu.progress.mountPoint = volumeIn(vorlu.platform.files, result);
  if (vorlu.progress.mountPoint.empty())
    reportMountFailure(vorlu, result.output);
  else
    vorlu.log("Successfully mounted the Disk Image");
}

}  // namespace

bool convertImage(Vorlu& vorlu, const std::string& path) {
  FileManager& files = vorlu.platform.files;
  vorlu.log("Converting disk image to mountable format. Please wait...");
  const std::string target = replacedAll(path, ".dmg", ".cdr");
  // An image that an earlier run converted may come from another download of the same name.
  if (target != path) files.remove(target);
  const ProcessResult result = hdiutil(vorlu, {"convert", "-quiet", path, "-format", "UDTO", "-o", target}, {});
  if (result.timedOut && target != path) files.remove(target);  // it isn't whole
  if (!files.exists(target)) {
    vorlu.log("Error: Disk image could not be converted to a mountable format");
    return false;
  }
  vorlu.log("Converted disk image to mountable format");
  vorlu.progress.convertedImagePath = target;
  return true;
}

bool mountImage(Vorlu& vorlu, const std::string& path, bool showProgress) {
  vorlu.progress.mountPoint.clear();
  if (showProgress) {
    const auto image = vorlu.platform.files.info(path);
    runWithTicker(vorlu, mountTicker, image ? image->size : 0, [&] { attach(vorlu, path); });
  } else {
    attach(vorlu, path);
  }
  return !vorlu.progress.mountPoint.empty();
}

bool detachImage(Vorlu& vorlu, const std::string& mountPoint) {
  const ProcessResult result = hdiutil(vorlu, {"detach", mountPoint}, mountGrace);
  if (const std::string said = trimmed(result.output); !said.empty()) vorlu.log(said);
  return result.started && result.status == 0;
}

std::string volumeOf(Vorlu& vorlu, const std::string& imagePath) {
  return volumeIn(vorlu.platform.files, hdiutil(vorlu, {"attach", "-nobrowse", imagePath}, mountGrace));
}

}  // namespace vorlu
