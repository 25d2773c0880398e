#include "refserver/exchange.h"

#include <strings.h>

#include <nlohmann/json.hpp>

namespace vorlu::refserver {

std::string Request::header(std::string_view name) const {
  for (const auto& [key, value] : headers) {
    if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0) return value;
  }
  return "";
}

Response messageResponse(int status, std::string_view message) {
  Response response;
  response.status = status;
  if (status >= 400) response.reason = message;
  // A message may quote a path as the client sent it, which needn't be UTF-8.
  response.body = nlohmann::json{{"message", message}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return response;
}

}  // namespace vorlu::refserver
