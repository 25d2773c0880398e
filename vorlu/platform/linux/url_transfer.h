#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vorlu/platform/url_session.h"

namespace vorlu {

/// Where the bytes of a body go.
class BodyReceiver {
 public:
  virtual ~BodyReceiver() = default;
  /// False ends the transfer with `failure`.
  virtual bool receive(std::string_view bytes) = 0;
  /// Forgets everything: the body so far was that of a redirect.
  virtual bool restart() = 0;
  const std::string& failure() const { return failure_; }

 protected:
  std::string failure_;
};

/// How a request ended: a response or an error, never both.
struct TransferOutcome {
  std::optional<UrlResponse> response;
  std::optional<std::string> error;
};

/// What bounds a transfer beyond its own time-out, and whom it trusts.
struct TransferRules {
  std::string authorities;  ///< PEM file of the roots that TLS trusts; empty: the machine's own
  /// Caps the requests' time-outs.
  std::chrono::milliseconds longestSilence = std::chrono::hours(1);
  /// From the request to the last byte of an answer that is kept in memory: a server that always sends one byte more
  /// must not hold the agent.
  std::chrono::milliseconds longestAnswer = std::chrono::minutes(10);
  /// A transfer that brings less than `leastBytes` in `slowWindow` is as good as a silent one.
  std::chrono::milliseconds slowWindow = std::chrono::minutes(5);
  std::int64_t leastBytes = std::int64_t{64} << 10;
  /// Bytes that a download leaves free on its volume.
  std::uint64_t diskReserve = std::uint64_t{64} << 20;
};

/// Carries a request through all its redirects on a curl handle, which it resets first. `decode` asks for a compressed
/// body and unpacks it; such an answer has `longestAnswer` to arrive.
TransferOutcome transfer(void* handle, const UrlRequest& request, BodyReceiver& receiver, bool decode,
                         const TransferRules& rules);

/// What of a URL may stand in a message: no query, no fragment, no user and password.
std::string shownUrl(std::string_view url);

}  // namespace vorlu
