#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

struct UrlRequest {
  std::string url;
  std::string method = "GET";
  std::vector<std::pair<std::string, std::string>> headers;
  /// Longest wait for the connection and for the next byte.
  std::chrono::seconds timeout{60};
  bool ignoreCache = false;  ///< asks caches on the way for a fresh answer
  std::string body;
};

struct UrlResponse {
  int status = 0;
  std::string finalUrl;
};

/// The three separate things that a completion handler receives: a transport error comes without data and without
/// response; an empty body is data.
struct UrlReply {
  std::optional<std::string> data;
  std::optional<UrlResponse> response;
  std::optional<std::string> error;
};

/// A finished transfer: its temporary file on the cache's volume, and what was computed while the bytes arrived.
struct DownloadReply {
  std::optional<std::string> location;  ///< path of the temporary file; the receiver moves or removes it
  std::optional<UrlResponse> response;
  std::optional<std::string> error;
  std::string sha256;  ///< 64 lower-case hexadecimal digits
  FileInfo file;       ///< the temporary file at its end
};

/// HTTP and HTTPS. Stands for NSURLSession's data and download tasks. TLS 1.2 or newer with peer and host checks, at
/// most 10 redirects, none from https to http; headers stay with their host. Both throw `Terminated` when the agent is
/// asked to end.
class UrlSession {
 public:
  virtual ~UrlSession() = default;

  /// Bodies above 64 MiB are a transport error.
  virtual UrlReply send(const UrlRequest& request) = 0;
  /// Streams the body to a fresh file in `folder`. No file is left behind on a transport error.
  virtual DownloadReply download(const UrlRequest& request, const std::string& folder) = 0;
};

}  // namespace vorlu
