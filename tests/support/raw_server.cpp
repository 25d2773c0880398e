#include "tests/support/raw_server.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

#include "vorlu/platform/linux/descriptor.h"

namespace vorlu::test {
namespace {

/// Reads until the head, and the body that it announces, are there or the other side closes.
std::string readRequest(int connection) {
  std::string request;
  std::array<char, 65536> block{};
  while (true) {
    const auto headEnd = request.find("\r\n\r\n");
    if (headEnd != std::string::npos) {
      const auto length = request.find("Content-Length: ");
      const std::size_t body = length < headEnd ? std::strtoul(request.c_str() + length + 16, nullptr, 10) : 0;
      if (request.size() >= headEnd + 4 + body) return request;
    }
    const ssize_t got = uninterrupted([&] { return ::read(connection, block.data(), block.size()); });
    if (got <= 0) return request;
    request.append(block.data(), static_cast<std::size_t>(got));
  }
}

}  // namespace

RawServer::RawServer(Handler handler) : handler_(std::move(handler)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener_ < 0 || ::bind(listener_, generic, size) != 0 || ::listen(listener_, 16) != 0 ||
      ::getsockname(listener_, generic, &size) != 0)
    throw std::runtime_error("127.0.0.1: no port to listen on");
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  ::close(listener_);
  for (const int connection : stalled_) ::close(connection);
}

std::string RawServer::url(const std::string& path) const {
  return fmt::format("http://127.0.0.1:{}{}", port_, path);
}

std::vector<std::string> RawServer::requests() {
  const std::scoped_lock lock(mutex_);
  return requests_;
}

void RawServer::accept() {
  while (true) {
    const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return;
    serve(connection);
  }
}

void RawServer::serve(int connection) {
  const std::string request = readRequest(connection);
  {
    const std::scoped_lock lock(mutex_);
    requests_.push_back(request);
  }
  const Reply answer = handler_(request);
  for (std::string_view left = answer.bytes; !left.empty();) {
    const ssize_t sent = ::send(connection, left.data(), left.size(), MSG_NOSIGNAL);
    if (sent <= 0) break;  // the client has gone
    left.remove_prefix(static_cast<std::size_t>(sent));
  }
  if (answer.stall) {
    stalled_.push_back(connection);
    return;
  }
  ::shutdown(connection, SHUT_WR);
  ::close(connection);
}

RawServer::Reply reply(int status, const std::string& body, const std::string& headers) {
  return {fmt::format("HTTP/1.1 {} Status\r\n{}Content-Length: {}\r\nConnection: close\r\n\r\n{}", status, headers,
                      body.size(), body)};
}

}  // namespace vorlu::test
