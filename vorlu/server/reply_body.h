#pragma once

#include <string>

#include "vorlu/platform/url_session.h"

namespace vorlu {

/// The log lines of a request that brought no usable answer; `error` has a {} for the transport's error.
struct ReplyTexts {
  const char* noData;
  const char* noResponse;
  const char* error;
};

/// The body of an answer, whatever its status, or the line of `texts` that tells why there is none.
Result<std::string> replyBody(UrlReply reply, const ReplyTexts& texts);

}  // namespace vorlu
