#include "vorlu/platform/linux/linux_running_applications.h"

#include <plist/plist.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "vorlu/platform/linux/process_ids.h"

namespace vorlu {
namespace {

constexpr std::size_t infoPlistCap = std::size_t{4} << 20;

struct FreePlist {
  void operator()(void* plist) const { plist_free(plist); }
};

/// A process's program as a path of the machine, empty if that can't be told. Linux shows it only to those who may
/// trace the process, which root in a sandbox may not; the name that the process was started by is open to everyone.
std::string programOf(pid_t pid) {
  const std::string folder = "/proc/" + std::to_string(pid);
  std::array<char, PATH_MAX> program{};
  if (::readlink((folder + "/exe").c_str(), program.data(), program.size() - 1) > 0) return program.data();
  std::string name;
  std::getline(std::ifstream(folder + "/cmdline"), name, '\0');
  return name.starts_with('/') ? name : "";
}

std::set<std::string> runningPrograms() {
  std::set<std::string> programs;
  for (const pid_t pid : processIds()) programs.insert(programOf(pid));
  return programs;
}

/// The innermost bundle that a program is the program of; empty if none.
std::string bundleOf(const std::string& program) {
  constexpr std::string_view inside = ".app/Contents/MacOS/";
  const auto at = program.rfind(inside);
  return at == std::string::npos ? "" : program.substr(0, at + std::string_view(".app").size());
}

std::string plistText(const std::string& data, const char* key) {
  plist_t root = nullptr;
  plist_from_memory(data.data(), static_cast<std::uint32_t>(data.size()), &root);
  const std::unique_ptr<void, FreePlist> owner(root);
  const plist_t node = root && plist_get_node_type(root) == PLIST_DICT ? plist_dict_get_item(root, key) : nullptr;
  if (!node || plist_get_node_type(node) != PLIST_STRING) return "";
  char* text = nullptr;
  plist_get_string_val(node, &text);
  const std::unique_ptr<char, decltype(&std::free)> textOwner(text, &std::free);
  return text ? text : "";
}

}  // namespace

bool LinuxRunningApplications::isRunning(const std::string& bundleIdentifier) {
  std::set<std::string> bundles;
  for (const std::string& program : runningPrograms()) {
    const auto bundle = root_.agentPath(bundleOf(program));
    if (bundle) bundles.insert(*bundle);
  }
  for (const std::string& bundle : bundles)
    if (identifierOf(bundle) == bundleIdentifier) return true;
  return false;
}

std::string LinuxRunningApplications::identifierOf(const std::string& bundle) {
  const auto data = files_.read(bundle + "/Contents/Info.plist", infoPlistCap);
  return data ? plistText(*data, "CFBundleIdentifier") : "";
}

}  // namespace vorlu
