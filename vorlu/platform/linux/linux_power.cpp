#include "vorlu/platform/linux/linux_power.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <charconv>

#include "vorlu/platform/linux/temporary_file.h"

namespace vorlu {
namespace {

std::string noteName(std::uint32_t id) {
  return fmt::format("{}-{}", ::getpid(), id);
}

std::string notePath(const std::string& name) {
  return fmt::format("{}/{}", LinuxPower::folder, name);
}

}  // namespace

LinuxPower::~LinuxPower() {
  for (const auto& [id, note] : held_) static_cast<void>(files_.remove(notePath(noteName(id))));
}

std::optional<std::uint32_t> LinuxPower::createNoDisplaySleepAssertion(const std::string& reason) {
  const std::scoped_lock lock(mutex_);
  if (!files_.createDirectory(folder, {0755, "root", "wheel"})) return std::nullopt;
  auto note = TemporaryFile::create(root_.hostPath(folder), folder, temporaryPrefix);
  // Locked before it gets its name: nobody may see it free.
  if (!note || ::flock(note->descriptor(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  if (!writeAll(note->descriptor(), reason + "\n") || !note->renameTo(noteName(lastId_ + 1))) return std::nullopt;
  held_[++lastId_] = note->release();
  return lastId_;
}

void LinuxPower::releaseAssertion(std::uint32_t id) {
  const std::scoped_lock lock(mutex_);
  const auto note = held_.find(id);
  if (note == held_.end()) return;
  static_cast<void>(files_.remove(notePath(noteName(id))));
  held_.erase(note);
}

bool LinuxPower::isHeld(const std::string& path) const {
  const Descriptor note(::open(root_.hostPath(path).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  return note && ::flock(note.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::optional<std::map<int, std::vector<PowerAssertion>>> LinuxPower::assertionsByProcess() {
  auto assertions = host_.facts()->powerAssertions;
  const auto notes = files_.list(folder);
  if (!assertions || !notes) return assertions;
  for (const std::string& name : *notes) {
    int process = 0;
    std::from_chars(name.data(), name.data() + name.size(), process);
    if (process > 0 && isHeld(notePath(name))) (*assertions)[process].push_back({"vorlu", "NoDisplaySleepAssertion"});
  }
  return assertions;
}

}  // namespace vorlu
