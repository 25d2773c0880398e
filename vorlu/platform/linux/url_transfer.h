#pragma once

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

/// Carries a request through all its redirects on a curl handle, which it resets first. `decode` asks for a compressed
/// body and unpacks it.
TransferOutcome transfer(void* handle, const UrlRequest& request, BodyReceiver& receiver, bool decode);

/// What of a URL may stand in a message: no query, no fragment, no user and password.
std::string shownUrl(std::string_view url);

}  // namespace vorlu
