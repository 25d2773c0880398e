#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace vorlu::test {

/// What becomes of a connection once the answer's bytes are sent.
enum class Then {
  close,
  reset,
  stall,    ///< stays open and silent
  trickle,  ///< the piece again and again, ten times a second
  flood,    ///< the piece again and again, as fast as it is taken
};

/// Bytes in place of an HTTP answer.
struct RawAnswer {
  std::string bytes;
  Then then = Then::close;
  std::string piece = "";
};

/// How a server shows that it is 127.0.0.1.
enum class Proof { none, sound, expired, otherHost, unknownRoot, selfSigned, oldProtocol };

/// Certificates of a test's own root, made by openssl when the object is.
class TestAuthority {
 public:
  TestAuthority();
  std::string file(const std::string& name) const { return folder_ / ("/" + name); }

 private:
  TemporaryFolder folder_;
};

/// A server on 127.0.0.1 that answers each connection's first request with any bytes; with TLS unless `proof` is none.
class HostileServer {
 public:
  using Answers = std::function<RawAnswer(const std::string& request)>;

  HostileServer(Answers answers, Proof proof, const TestAuthority& authority);
  ~HostileServer();
  HostileServer(const HostileServer&) = delete;
  HostileServer& operator=(const HostileServer&) = delete;

  const std::string& base() const { return base_; }
  /// All requests so far, as they came.
  std::vector<std::string> requests();

 private:
  struct Channel;
  void accept();
  void serve(int socket);
  void continueAs(Channel& channel, const RawAnswer& answer);

  Answers answers_;
  std::shared_ptr<void> tls_;
  std::string base_;
  int listener_ = -1;
  std::atomic<bool> ends_ = false;
  std::mutex mutex_;
  std::vector<std::string> requests_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace vorlu::test
