#include "vorlu/platform/linux/descriptor.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <system_error>

namespace vorlu {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    close();
    number_ = std::exchange(other.number_, -1);
  }
  return *this;
}

void Descriptor::close() {
  if (number_ >= 0) ::close(number_);
  number_ = -1;
}

Descriptor aboveStandard(int number) {
  Descriptor low(number);
  return number < 0 || number > STDERR_FILENO ? std::move(low)
                                              : Descriptor(::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool writeAll(int descriptor, std::string_view data) {
  while (!data.empty()) {
    const ssize_t written = uninterrupted([&] { return ::write(descriptor, data.data(), data.size()); });
    if (written < 0) return false;
    data.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

Failure systemFailure(const std::string& path, int error) {
  return {fmt::format("{}: {}", path, std::generic_category().message(error)), error};
}

}  // namespace vorlu
