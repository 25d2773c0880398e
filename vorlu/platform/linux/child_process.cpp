#include "vorlu/platform/linux/child_process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <pwd.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <mutex>

#include "vorlu/platform/linux/descriptor.h"

namespace vorlu {
namespace {

constexpr std::array<const char*, 5> passedThrough = {"TZ", "DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY",
                                                      "XDG_RUNTIME_DIR"};

/// Pointers to the texts, with the null that ends the list.
std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> list;
  list.reserve(texts.size() + 1);
  for (const std::string& text : texts) list.push_back(const_cast<char*>(text.c_str()));
  list.push_back(nullptr);
  return list;
}

struct FileActions {
  posix_spawn_file_actions_t value{};
  FileActions() { ::posix_spawn_file_actions_init(&value); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&value); }

  void redirect(int target, int source) {
    if (source >= 0)
      ::posix_spawn_file_actions_adddup2(&value, source, target);
    else
      ::posix_spawn_file_actions_addopen(&value, target, "/dev/null", O_RDWR, 0);
  }
};

struct Attributes {
  posix_spawnattr_t value{};
  Attributes() {
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_init(&value);
    ::posix_spawnattr_setsigdefault(&value, &all);
    ::posix_spawnattr_setsigmask(&value, &none);
    ::posix_spawnattr_setflags(&value, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&value); }
};

/// posix_spawn can't set it, so the agent's own is what children inherit. The agent gives each of its files its mode.
void setUmaskOnce() {
  static std::once_flag once;
  std::call_once(once, [] { ::umask(022); });
}

}  // namespace

OwnUser ownUser() {
  const uid_t id = ::geteuid();
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(16384);
  if (::getpwuid_r(id, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
    return {entry.pw_name, entry.pw_dir};
  if (id == 0) return {"root", "/var/root"};
  return {std::to_string(id), "/"};
}

std::vector<std::string> childEnvironment() {
  std::vector<std::string> environment = {"PATH=/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin", "HOME=" + ownUser().home,
                                          "LANG=en_US.UTF-8"};
  for (const char* name : passedThrough)
    if (const char* value = std::getenv(name)) environment.push_back(fmt::format("{}={}", name, value));
  return environment;
}

Result<pid_t> spawnChild(const Command& command, int outputDescriptor) {
  setUmaskOnce();
  FileActions actions;
  actions.redirect(STDIN_FILENO, -1);
  actions.redirect(STDOUT_FILENO, outputDescriptor);
  actions.redirect(STDERR_FILENO, command.mergeStandardError ? outputDescriptor : -1);
  ::posix_spawn_file_actions_addclosefrom_np(&actions.value, STDERR_FILENO + 1);
  ::posix_spawn_file_actions_addchdir_np(&actions.value, "/");
  const Attributes attributes;
  std::vector<std::string> words = {command.program};
  words.insert(words.end(), command.arguments.begin(), command.arguments.end());
  const auto environment = childEnvironment();
  pid_t child = 0;
  const int error = ::posix_spawn(&child, command.program.c_str(), &actions.value, &attributes.value,
                                  pointers(words).data(), pointers(environment).data());
  if (error != 0) return systemFailure(command.program, error);
  return child;
}

}  // namespace vorlu
