#include "fuzz/agent.h"

#include <algorithm>

#include "vorlu/state/paths.h"

namespace vorlu::fuzz {
namespace {

struct Ended : RunningProcess {
  explicit Ended(ProcessResult theResult) : result(std::move(theResult)) {}
  ProcessResult result;
  bool isRunning() override { return false; }
  ProcessResult wait() override { return result; }
};

}  // namespace

ProcessResult OneProgram::run(const Command& command) {
  ProcessResult result;
  result.started = true;
  result.status = status;
  if (!command.onOutput) {
    result.output = output.substr(0, command.outputCap);
    return result;
  }
  for (std::size_t at = 0; at < output.size(); at += pieceSize)
    command.onOutput(std::string_view(output).substr(at, pieceSize));
  return result;
}

std::unique_ptr<RunningProcess> OneProgram::start(const Command& command) {
  return std::make_unique<Ended>(run(command));
}

FuzzedMac& FuzzedMac::shared() {
  static FuzzedMac mac;
  return mac;
}

FuzzedMac::FuzzedMac() {
  for (const char* folder : {"/Library/Keychains", "/Library/Managed Preferences", "/private/tmp", "/private/var/log",
                             "/private/var/tmp", "/usr/local/bin"})
    std::filesystem::create_directories(folder_ / folder);
  for (const char* name : {"var", "tmp", "etc"})
    std::filesystem::create_directory_symlink(std::string("private/") + name, folder_ / std::string("/") + name);
}

Vorlu& FuzzedMac::fresh() {
  for (const std::string& path :
       {paths::log, paths::jamfLog, paths::errors, paths::run, paths::offlineData, std::string(LinuxKeychain::path)})
    files.remove(path);
  files.createDirectory(paths::run, {0700, "root", "wheel"});
  processes.output.clear();
  processes.pieceSize = 1 << 20;
  processes.status = 0;
  urls.body.clear();
  systemLog.take();
  console.take();
  vorlu_.reset();
  vorlu_ = std::make_unique<Vorlu>(platform_, site_);
  return *vorlu_;
}

}  // namespace vorlu::fuzz
