#include "refserver/connection.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <optional>
#include <string>

namespace vorlu::refserver {

namespace {

using AddressQuestion = int (*)(int, sockaddr*, socklen_t*);

/// The port of one end of a socket; nothing for other descriptors.
std::optional<int> portOf(int descriptor, AddressQuestion question) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (question(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) return std::nullopt;
  if (address.ss_family == AF_INET) return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
  if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port);
  return std::nullopt;
}

}  // namespace

void shutDownConnection(int ownPort, int clientPort) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const std::string name = entry.path().filename().string();
    int descriptor = -1;
    std::from_chars(name.data(), name.data() + name.size(), descriptor);
    if (portOf(descriptor, ::getsockname) == ownPort && portOf(descriptor, ::getpeername) == clientPort) {
      ::shutdown(descriptor, SHUT_RDWR);
    }
  }
}

}  // namespace vorlu::refserver
