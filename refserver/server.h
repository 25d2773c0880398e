#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "refserver/endpoints.h"
#include "refserver/exchange.h"
#include "seal/keys.h"
#include "seal/site_file.h"
#include "vorlu/platform/result.h"

namespace vorlu::refserver {

/// Seconds of the real clock.
double systemSeconds();

struct ServerConfig {
  std::string dataFolder;
  seal::SiteFile site;
  seal::ServerKeys keys;
  ClockFunction clock = systemSeconds;
  std::string address = "127.0.0.1";
  int port = 0;  ///< 0: any free one

  /// Sees each answer before it is sent and may change it or give it a fault. Called on the connection's thread.
  std::function<void(const Request&, Response&)> hook = {};
  bool keepExchanges = true;  ///< for `exchanges()`; off where the server runs for long
  /// Told of each request with its answer's status, one call at a time.
  std::function<void(const Exchange&)> onExchange = {};
};

/// The reference server. Each connection carries one request.
class Server {
 public:
  explicit Server(ServerConfig config);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /// Stops.
  ~Server();

  /// Listens; the port, once requests are taken. Fails when the port can't be had. Starts once.
  Result<int> start();
  /// Ends stalled and delayed answers, waits for those under way and closes the port. May be called twice.
  void stop();

  /// "http://127.0.0.1:PORT", after `start`.
  std::string baseUrl() const;
  /// Every request so far, in the order in which they came.
  std::vector<Exchange> exchanges() const;
  void forgetExchanges();

 private:
  class Connections;
  std::unique_ptr<Connections> connections_;
};

}  // namespace vorlu::refserver
