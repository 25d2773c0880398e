#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlu::refserver {

using Headers = std::vector<std::pair<std::string, std::string>>;

struct Request {
  std::string method;
  std::string path;   ///< percent-decoded, without the query
  std::string query;  ///< as sent, without the "?"; empty when there is none
  Headers headers = {};
  std::string body = {};

  /// The first header of that name in any letter case; empty when there is none.
  std::string header(std::string_view name) const;
};

/// What goes wrong on the way of an answer.
struct Fault {
  std::chrono::milliseconds delay{0};  ///< real time before the answer's first byte
  bool noAnswer = false;               ///< closes the connection without a byte
  /// The head promises the whole body; after so many bytes of it the connection is closed.
  std::optional<std::size_t> dropAfter = {};
  /// The same, but the connection stays open and silent until the client gives up or the server stops.
  std::optional<std::size_t> stallAfter = {};
};

struct Response {
  int status = 200;
  std::string contentType = "application/json";
  std::string body;
  Headers headers;
  std::string file;  ///< when set, a path whose content is the body
  Fault fault;
  std::string reason = {};  ///< why the request was refused, for the server's own log
};

/// One request and the status it was answered with, and why when it was refused.
struct Exchange {
  Request request;
  int status = 0;
  std::string reason = {};
};

/// An answer with a JSON object of one member, "message".
Response messageResponse(int status, std::string_view message);

}  // namespace vorlu::refserver
