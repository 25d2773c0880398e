#include "vorlu/server/reply_body.h"

#include <fmt/format.h>

#include <utility>

namespace vorlu {

Result<std::string> replyBody(UrlReply reply, const ReplyTexts& texts) {
  if (!reply.data) return Failure{texts.noData};
  if (!reply.response) return Failure{texts.noResponse};
  if (reply.error) return Failure{fmt::format(fmt::runtime(texts.error), *reply.error)};
  return std::move(*reply.data);
}

}  // namespace vorlu
