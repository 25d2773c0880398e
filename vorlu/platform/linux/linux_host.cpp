#include "vorlu/platform/linux/linux_host.h"

#include <sys/stat.h>

#include <charconv>
#include <fstream>
#include <nlohmann/json.hpp>

namespace vorlu {
namespace {

using Json = nlohmann::json;

std::optional<std::string> text(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? std::optional(found->get<std::string>()) : std::nullopt;
}

std::optional<bool> flag(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_boolean() ? std::optional(found->get<bool>()) : std::nullopt;
}

template <class Number>
std::optional<Number> number(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number() ? std::optional(found->get<Number>()) : std::nullopt;
}

/// The member as an array or object, an empty one when it is missing or something else.
const Json& container(const Json& object, const char* key) {
  static const Json none;
  const auto found = object.find(key);
  return found != object.end() && found->is_structured() ? *found : none;
}

std::optional<HostClock> clockOf(const Json& file) {
  const Json& clock = container(file, "clock");
  const auto real = number<double>(clock, "real");
  const auto mac = number<double>(clock, "mac");
  const double rate = number<double>(clock, "rate").value_or(1);
  if (!real || !mac || !(rate > 0)) return std::nullopt;
  return HostClock{*real, *mac, rate};
}

std::vector<PowerAssertion> assertionsOf(const Json& entries) {
  std::vector<PowerAssertion> assertions;
  for (const Json& entry : entries) {
    const auto process = text(entry, "Process Name");
    const auto type = text(entry, "AssertionTrueType");
    if (process && type) assertions.push_back({*process, *type});
  }
  return assertions;
}

std::optional<std::map<int, std::vector<PowerAssertion>>> powerAssertionsOf(const Json& file) {
  if (!file.contains("powerAssertions")) return std::nullopt;
  std::map<int, std::vector<PowerAssertion>> byProcess;
  for (const auto& [key, entries] : container(file, "powerAssertions").items()) {
    int process = 0;
    std::from_chars(key.data(), key.data() + key.size(), process);
    byProcess[process] = assertionsOf(entries);
  }
  return byProcess;
}

std::vector<Camera> camerasOf(const Json& file) {
  std::vector<Camera> cameras;
  for (const Json& entry : container(file, "cameras"))
    if (const auto id = number<std::uint32_t>(entry, "id"))
      cameras.push_back({*id, flag(entry, "inUse").value_or(false)});
  return cameras;
}

HostFacts factsOf(const Json& file) {
  HostFacts facts;
  if (!file.is_object()) return facts;
  facts.consoleUser = text(file, "consoleUser");
  facts.consoleUid = number<uid_t>(file, "consoleUID");
  facts.cpuType = number<int>(file, "cpuType");
  facts.osVersion = text(file, "osVersion");
  facts.serialNumber = text(file, "serialNumber");
  facts.computerName = text(file, "computerName");
  facts.productDescription = text(file, "productDescription");
  facts.diskBytes = number<std::int64_t>(file, "diskBytes");
  facts.freeDiskBytes = number<std::int64_t>(file, "freeDiskBytes");
  for (const Json& application : container(file, "activeApplications"))
    if (application.is_string()) facts.activeApplications.push_back(application.get<std::string>());
  facts.powerAssertions = powerAssertionsOf(file);
  facts.cameras = camerasOf(file);
  facts.screenShared = flag(file, "screenShared");
  facts.clock = clockOf(file);
  return facts;
}

HostFacts readFacts(const std::string& hostPath) {
  std::ifstream file(hostPath);
  if (!file) return {};
  const Json json = Json::parse(file, nullptr, /*allow_exceptions=*/false);
  return factsOf(json);
}

}  // namespace

std::shared_ptr<const HostFacts> LinuxHost::facts() {
  const std::scoped_lock lock(mutex_);
  const std::string hostPath = root_.hostPath(path);
  struct stat status {};
  if (::stat(hostPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    version_ = {};
    return facts_ = std::make_shared<HostFacts>();
  }
  const Version version{status.st_ino, status.st_size,
                        std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
  if (version != version_) {
    facts_ = std::make_shared<HostFacts>(readFacts(hostPath));
    version_ = version;
  }
  return facts_;
}

}  // namespace vorlu
