#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vorlu::test {

/// A server on a free port of 127.0.0.1 that answers each connection's one request with exactly the bytes it is told to
/// and then closes: whole answers, broken ones or none.
class RawServer {
 public:
  struct Reply {
    std::string bytes;
    bool stall = false;  ///< keep the connection open after the bytes until the server ends
  };
  /// Gets the request's head and body as they arrived.
  using Handler = std::function<Reply(const std::string& request)>;

  explicit RawServer(Handler handler);
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;
  ~RawServer();

  std::string url(const std::string& path) const;
  /// All requests so far.
  std::vector<std::string> requests();

 private:
  void accept();
  void serve(int connection);

  Handler handler_;
  int listener_ = -1;
  int port_ = 0;
  std::mutex mutex_;
  std::vector<std::string> requests_;
  std::vector<int> stalled_;
  std::thread acceptor_;
};

/// A whole answer with its Content-Length; `headers` are lines that each end with "\r\n".
RawServer::Reply reply(int status, const std::string& body, const std::string& headers = "");

}  // namespace vorlu::test
