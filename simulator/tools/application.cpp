#include "simulator/tools/application.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "simulator/tools/plist.h"

namespace vorlu::simulator {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view bundleEnding = ".app";

bool sameName(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::string withoutEnding(std::string name) {
  if (name.ends_with(bundleEnding)) name.resize(name.size() - bundleEnding.size());
  return name;
}

std::vector<std::string> applicationFolders() {
  std::vector<std::string> folders = {"/Applications", "/System/Applications"};
  std::error_code error;
  for (const auto& home : fs::directory_iterator("/Users", error)) folders.push_back(home.path() / "Applications");
  for (const std::string folder : {"/Applications", "/System/Applications"}) {
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (entry.is_directory(error) && entry.path().extension() != bundleEnding) folders.push_back(entry.path());
    }
  }
  return folders;
}

}  // namespace

std::string bundleOf(const std::string& program) {
  const std::size_t contents = program.rfind(".app/Contents/MacOS/");
  return contents == std::string::npos ? "" : program.substr(0, contents + bundleEnding.size());
}

std::optional<Application> applicationAt(const std::string& path) {
  std::error_code error;
  const std::string real = fs::canonical(path, error);
  if (error || fs::path(real).extension() != bundleEnding) return std::nullopt;
  Application application;
  application.path = real;
  application.name = withoutEnding(fs::path(real).filename());
  application.program = real + "/Contents/MacOS/" + application.name;
  if (const auto info = readTexts(real + "/Contents/Info.plist")) {
    const auto program = info->find("CFBundleExecutable");
    if (program != info->end()) application.program = real + "/Contents/MacOS/" + program->second;
  }
  if (!fs::is_regular_file(application.program, error)) return std::nullopt;
  return application;
}

std::optional<Application> applicationNamed(const std::string& name) {
  const std::string wanted = withoutEnding(name);
  for (const auto& process : allProcesses()) {
    const std::string bundle = bundleOf(process.program);
    if (bundle.empty() || !sameName(withoutEnding(fs::path(bundle).filename()), wanted)) continue;
    return Application{bundle, wanted, process.program};
  }
  std::error_code error;
  for (const auto& folder : applicationFolders()) {
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (!sameName(entry.path().filename(), wanted + std::string(bundleEnding))) continue;
      if (auto application = applicationAt(entry.path())) return application;
    }
  }
  return std::nullopt;
}

std::vector<Process> processesOf(const Application& application) {
  std::vector<Process> running;
  for (auto& process : allProcesses()) {
    if (process.program == application.program) running.push_back(std::move(process));
  }
  return running;
}

}  // namespace vorlu::simulator
