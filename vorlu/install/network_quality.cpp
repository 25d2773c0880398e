#include "vorlu/install/network_quality.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr int usualSpeed = 50;  // megabits per second
constexpr std::size_t longestFile = 1 << 20;
constexpr std::chrono::seconds longestMeasurement{120};  // the tool takes up to half a minute

/// What the system's tool writes of a measurement.
struct SpeedTestData {
  std::optional<std::int64_t> dl_throughput;  ///< bits per second
  static constexpr auto fields() { return std::array{field<&SpeedTestData::dl_throughput>("dl_throughput")}; }
};

int readSpeed(FileManager& files) {
  auto text = files.read(paths::networkQuality, longestFile);
  const auto measured = text ? decodeJson<SpeedTestData>(std::move(*text)) : text.failure();
  if (!measured || measured->dl_throughput.value_or(0) <= 0) return usualSpeed;
  return static_cast<int>(std::clamp(*measured->dl_throughput / 1'000'000, std::int64_t{1}, std::int64_t{1'000'000}));
}

/// What stands behind `mark` up to `end`, or to the end of the text; nothing without the mark.
std::optional<std::string_view> behind(std::string_view text, std::string_view mark, std::string_view end) {
  const std::size_t at = text.find(mark);
  if (at == std::string_view::npos) return std::nullopt;
  text.remove_prefix(at + mark.size());
  return end.empty() ? text : text.substr(0, text.find(end));
}

/// The capacity in a measurement's summary, as in "Downlink capacity: 93.498 Mbps - Low latency".
std::optional<std::string> capacityIn(std::string_view output) {
  constexpr std::string_view refusal = "reason=Incorrect response status code on latency measuring connection";
  if (output.find(refusal) != std::string_view::npos) return std::nullopt;
  const auto summary = behind(output, "==== SUMMARY ====", "");
  const auto line = summary ? behind(*summary, "Downlink capacity", "\n") : std::nullopt;
  const auto value = line ? behind(*line, ":", " -") : std::nullopt;
  return value ? std::optional(trimmed(*value)) : std::nullopt;
}

}  // namespace

int networkSpeed(Vorlu& vorlu) {
  std::optional<int>& speed = vorlu.progress.networkSpeed;
  if (!speed) speed = readSpeed(vorlu.platform.files);
  return *speed;
}

void recordNetworkQuality(Vorlu& vorlu) {
  FileManager& files = vorlu.platform.files;
  if (const Status removed = files.remove(paths::networkQuality); !removed)
    vorlu.log(fmt::format("Error: Could not remove an earlier network measurement - {}", removed.error()));
  // Anybody may make files in this folder, and the shell would write through a link; root's file they can't replace.
  if (const Status made = files.writeAtomically(paths::networkQuality, "", {0755, "root", "wheel"}); !made) {
    vorlu.log(fmt::format("Error: Could not make the file of the network measurement - {}", made.error()));
    return;
  }
  Command command = shellCommand(fmt::format("networkQuality -s -v -c > {}", paths::networkQuality));
  command.limit = longestMeasurement;
  runTool(vorlu.platform.processes, vorlu.log, command);
  if (const Status given = files.setOwnership(paths::networkQuality, 0755, "root", "wheel"); !given)
    vorlu.log(fmt::format("Error: Could not set the permissions of the network measurement - {}", given.error()));
}

std::string measureNetworkQuality(Vorlu& vorlu) {
  vorlu.log("Attempting to gather network quality information...");
  Command command;
  command.program = "/usr/bin/networkQuality";
  command.limit = longestMeasurement;
  const auto capacity = capacityIn(runTool(vorlu.platform.processes, vorlu.log, command).output);
  if (!capacity) vorlu.log("Could not gather network quality results");
  return capacity.value_or("");
}

}  // namespace vorlu
