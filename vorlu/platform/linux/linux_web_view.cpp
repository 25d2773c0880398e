#include "vorlu/platform/linux/linux_web_view.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "vorlu/platform/linux/temporary_file.h"

namespace vorlu {
namespace {

/// Where Debian's /usr stands: inside a simulated Mac, or in its place.
constexpr std::array systems = {"/.linux", "/usr"};

/// The program itself, not the script around it, which reads files of the user's.
std::string programOf(std::string_view system) {
  return fmt::format("{}/lib/chromium/chromium", system);
}

/// A folder for one page's profile. It is gone at the end of the scope.
class Profile {
 public:
  explicit Profile(FileManager& files)
      : files_(files), path_(fmt::format("/private/var/tmp/{}", temporaryName(temporaryPrefix))) {
    made_ = files.createDirectory(path_, {0700, "", ""}).ok();
  }
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;
  ~Profile() {
    if (made_) static_cast<void>(files_.remove(path_));
  }

  bool made() const { return made_; }
  const std::string& path() const { return path_; }

 private:
  FileManager& files_;
  std::string path_;
  bool made_ = false;
};

/// The browser asks these for itself. A page may be on any other host.
constexpr std::string_view unwantedHosts =
    "MAP update.googleapis.com ~NOTFOUND, MAP accounts.google.com ~NOTFOUND, MAP clients2.google.com ~NOTFOUND";

/// Arguments of env, which gives the browser its profile as home and temporary folder: parts of it write there.
std::vector<std::string> argumentsFor(const std::string& program, const std::string& url, const std::string& userAgent,
                                      const std::string& profileFolder) {
  std::vector<std::string> arguments = {"HOME=" + profileFolder,
                                        "TMPDIR=" + profileFolder,
                                        program,
                                        "--headless",
                                        "--no-sandbox",  // which refuses to work for root
                                        "--disable-gpu",
                                        "--disable-dev-shm-usage",
                                        "--no-first-run",
                                        "--no-default-browser-check",
                                        "--disable-background-networking",
                                        "--disable-component-update",
                                        "--disable-default-apps",
                                        "--disable-domain-reliability",
                                        "--disable-breakpad",
                                        "--disable-sync",
                                        "--disable-extensions",
                                        "--disable-quic",
                                        fmt::format("--host-resolver-rules={}", unwantedHosts),
                                        "--user-data-dir=" + profileFolder};
  if (!userAgent.empty()) arguments.push_back("--user-agent=" + userAgent);
  arguments.insert(arguments.end(), {"--dump-dom", "--", url});
  return arguments;
}

}  // namespace

std::optional<std::string> LinuxWebView::outerHTML(const std::string& url, const std::string& userAgent) {
  const auto system = std::find_if(systems.begin(), systems.end(), [](const char* candidate) {
    return ::access(programOf(candidate).c_str(), X_OK) == 0;
  });
  if (system == systems.end()) return std::nullopt;
  const Profile profile(files_);
  if (!profile.made()) return std::nullopt;
  Command command;
  command.program = fmt::format("{}/bin/env", *system);
  command.arguments = argumentsFor(programOf(*system), url, userAgent, root_.hostPath(profile.path()));
  command.mergeStandardError = false;
  command.limit = longestLoad;
  ProcessResult page = processes_.run(command);
  if (!page.started || page.timedOut || page.status != 0 || page.output.empty()) return std::nullopt;
  return std::move(page.output);
}

}  // namespace vorlu
