#include "simulator/dialog/window_library.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace vorlu::simulator {

namespace {

constexpr const char* libraryName = "sim-dialog-window.so";
constexpr const char* simulatorFolder = "/usr/libexec/simulator";

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

std::string libraryPath() {
  std::error_code error;
  const auto beside = std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / libraryName;
  return access(beside.c_str(), R_OK) == 0 ? beside.string() : fmt::format("{}/{}", simulatorFolder, libraryName);
}

}  // namespace

int showInWindow(const Prompt& prompt, CommandFile& commands) {
  if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) {
    fmt::print(stderr, "Dialog: there is no display\n");
    return ending::noDisplay;
  }
  // Never unloaded: Qt's threads may still be in it.
  void* library = dlopen(libraryPath().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    fmt::print(stderr, "Dialog: windows can't be shown here: {}\n", dlerror());
    return ending::noDisplay;
  }
  const auto show = reinterpret_cast<ShowPrompt>(dlsym(library, showPromptName));
  if (show == nullptr) {
    fmt::print(stderr, "Dialog: {} isn't of this program's build\n", libraryPath());
    return ending::noDisplay;
  }
  return show(prompt, commands);
}

}  // namespace vorlu::simulator
