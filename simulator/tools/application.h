#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/tools/process_table.h"

namespace vorlu::simulator {

/// An application bundle.
struct Application {
  std::string path;     ///< real path of the bundle
  std::string name;     ///< the bundle's name without ".app"
  std::string program;  ///< "{path}/Contents/MacOS/{CFBundleExecutable}"
};

/// "/Applications/Foo.app" of "/Applications/Foo.app/Contents/MacOS/Foo"; empty for a program outside a bundle.
std::string bundleOf(const std::string& program);

/// The bundle at `path`; nothing when there is no bundle with a program.
std::optional<Application> applicationAt(const std::string& path);

/// The application that a user means by `name`, with or without ".app": a running one first, then those in the
/// applications folders. Letter case doesn't matter.
std::optional<Application> applicationNamed(const std::string& name);

/// Processes that run the application's program.
std::vector<Process> processesOf(const Application& application);

}  // namespace vorlu::simulator
