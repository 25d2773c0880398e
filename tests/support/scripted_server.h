#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "refserver/server.h"

namespace vorlu::test {

/// The reference server on a free port, with every answer given by the test: whole ones, broken ones or none.
class ScriptedServer {
 public:
  using Handler = std::function<refserver::Response(const refserver::Request& request)>;

  explicit ScriptedServer(const Handler& handler) : server_(configOf(handler)) { EXPECT_TRUE(server_.start()); }

  std::string url(const std::string& path) const { return server_.baseUrl() + path; }
  /// All requests so far.
  std::vector<refserver::Request> requests() const {
    std::vector<refserver::Request> all;
    for (const refserver::Exchange& exchange : server_.exchanges()) all.push_back(exchange.request);
    return all;
  }

 private:
  static refserver::ServerConfig configOf(const Handler& handler) {
    refserver::ServerConfig config{"/nowhere", {}, std::move(*seal::readServerKeys(VORLU_SITE_KEYS))};
    config.hook = [handler](const refserver::Request& request, refserver::Response& response) {
      response = handler(request);
    };
    return config;
  }

  refserver::Server server_;
};

inline refserver::Response reply(int status, const std::string& body, const refserver::Headers& headers = {},
                                 const refserver::Fault& fault = {}) {
  return {status, "text/plain", body, headers, "", fault};
}

}  // namespace vorlu::test
