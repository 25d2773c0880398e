#include "vorlu/detection/processor.h"

namespace vorlu {
namespace {

constexpr int cpuTypeIntel = 7;
constexpr int cpuTypeSilicon = 12;

const std::string& versionFor(Processor processor, const std::string& both, const std::string& intel,
                              const std::string& silicon) {
  if (intel.empty() || silicon.empty()) return both;
  switch (processor) {
    case Processor::intel:
      return intel;
    case Processor::silicon:
      return silicon;
    case Processor::unknown:
      break;
  }
  return both;
}

}  // namespace

Processor processor(Device& device) {
  const std::optional<int> type = device.cpuType();
  if (type == cpuTypeIntel) return Processor::intel;
  if (type == cpuTypeSilicon) return Processor::silicon;
  return Processor::unknown;
}

std::string cpuType(Device& device) {
  switch (processor(device)) {
    case Processor::intel:
      return "Intel";
    case Processor::silicon:
      return "Silicon";
    case Processor::unknown:
      break;
  }
  return "unknown";
}

const std::string& effectiveLatestVersion(const AppBlueprints& entry, Processor processor) {
  return versionFor(processor, orEmpty(entry.latestVersion), orEmpty(entry.latestIntelVersion),
                    orEmpty(entry.latestSiliconVersion));
}

const std::string& effectiveLatestVersion(const CurrentApp& app, Processor processor) {
  return versionFor(processor, app.latestVersion, app.latestIntelVersion, app.latestSiliconVersion);
}

bool lacksBuild(const AppBlueprints& entry, Processor processor) {
  if (entry.architecture != "arch") return false;
  if (processor == Processor::silicon) return entry.appleSiliconDownloadURL == "";
  return processor == Processor::intel && entry.intelDownloadURL == "";
}

}  // namespace vorlu
