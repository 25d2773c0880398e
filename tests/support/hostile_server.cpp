#include "tests/support/hostile_server.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace vorlu::test {
namespace {

constexpr int shortWait = 50;  // milliseconds until a silent connection looks whether the server ends

std::shared_ptr<void> tlsOf(Proof proof, const TestAuthority& authority) {
  constexpr const char* names[] = {"", "sound", "expired", "otherHost", "unknownRoot", "selfSigned", "sound"};
  if (proof == Proof::none) return nullptr;
  const std::string name = authority.file(names[static_cast<int>(proof)]);
  SSL_CTX* const context = SSL_CTX_new(TLS_server_method());
  const bool old = proof == Proof::oldProtocol;
  if (old) SSL_CTX_set_security_level(context, 0);
  EXPECT_TRUE(SSL_CTX_use_certificate_chain_file(context, (name + ".pem").c_str()) == 1 &&
              SSL_CTX_use_PrivateKey_file(context, (name + ".key").c_str(), SSL_FILETYPE_PEM) == 1 &&
              SSL_CTX_set_max_proto_version(context, old ? TLS1_1_VERSION : 0) == 1 &&
              (!old || SSL_CTX_set_min_proto_version(context, TLS1_VERSION) == 1));
  return {context, [](void* it) { SSL_CTX_free(static_cast<SSL_CTX*>(it)); }};
}

}  // namespace

TestAuthority::TestAuthority() {
  const std::string script = VORLU_SOURCE_DIR "/tests/support/make-certificates ";
  EXPECT_EQ(std::system((script + folder_.path()).c_str()), 0) << "openssl made no certificates";
}

struct HostileServer::Channel {
  int socket;
  std::unique_ptr<SSL, decltype(&SSL_free)> tls;

  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto sent = tls ? SSL_write(tls.get(), bytes.data(), static_cast<int>(bytes.size()))
                            : ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  bool receive(std::string& text) {
    char block[8192];
    const auto got = tls ? SSL_read(tls.get(), block, sizeof block) : ::recv(socket, block, sizeof block, 0);
    if (got > 0) text.append(block, static_cast<std::size_t>(got));
    return got > 0;
  }
};

HostileServer::HostileServer(Answers answers, Proof proof, const TestAuthority& authority)
    : answers_(std::move(answers)), tls_(tlsOf(proof, authority)) {
  ::signal(SIGPIPE, SIG_IGN);
  sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof address;
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_TRUE(::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) == 0 && ::listen(listener_, 64) == 0 &&
              ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) == 0);
  base_ = fmt::format("{}://127.0.0.1:{}", tls_ ? "https" : "http", ntohs(address.sin_port));
  acceptor_ = std::thread([this] { accept(); });
}

HostileServer::~HostileServer() {
  ends_ = true;
  acceptor_.join();
  for (std::thread& thread : threads_) thread.join();
  ::close(listener_);
}

std::vector<std::string> HostileServer::requests() {
  const std::scoped_lock lock(mutex_);
  return requests_;
}

void HostileServer::accept() {
  pollfd wait{listener_, POLLIN, 0};
  while (!ends_) {
    if (::poll(&wait, 1, shortWait) <= 0) continue;
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    const timeval patience{2, 0};  // for a client that neither reads nor writes
    for (const int which : {SO_SNDTIMEO, SO_RCVTIMEO})
      ::setsockopt(socket, SOL_SOCKET, which, &patience, sizeof patience);
    threads_.emplace_back([this, socket] { serve(socket); });
  }
}

void HostileServer::serve(int socket) {
  Channel channel{socket, {tls_ ? SSL_new(static_cast<SSL_CTX*>(tls_.get())) : nullptr, &SSL_free}};
  if (!channel.tls || (SSL_set_fd(channel.tls.get(), socket) == 1 && SSL_accept(channel.tls.get()) == 1)) {
    std::string request;
    std::size_t whole = std::string::npos;
    while (request.size() < whole && channel.receive(request)) {
      const auto head = request.find("\r\n\r\n");
      const auto length = request.find("Content-Length: ");
      if (head == std::string::npos) continue;
      whole = head + 4 + (length < head ? std::strtoul(request.c_str() + length + 16, nullptr, 10) : 0);
    }
    {
      const std::scoped_lock lock(mutex_);
      requests_.push_back(request);
    }
    const RawAnswer answer = answers_(request);
    if (channel.send(answer.bytes)) continueAs(channel, answer);
    const linger abrupt{1, 0};
    if (answer.then == Then::reset) ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &abrupt, sizeof abrupt);
    if (channel.tls && answer.then == Then::close) SSL_shutdown(channel.tls.get());
  }
  ::close(socket);
}

void HostileServer::continueAs(Channel& channel, const RawAnswer& answer) {
  pollfd wait{channel.socket, POLLRDHUP, 0};
  const bool goesOn = answer.then == Then::trickle || answer.then == Then::flood;
  if (answer.then == Then::close || answer.then == Then::reset) return;
  while (!ends_ && (!goesOn || channel.send(answer.piece)))
    if (answer.then != Then::flood && ::poll(&wait, 1, 2 * shortWait) != 0) return;
}

}  // namespace vorlu::test
