#include "refserver/access_line.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>

namespace vorlu::refserver {

namespace {

std::string onOneLine(const std::string& text) {
  std::string line;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7f) {
      line += fmt::format("\\x{:02x}", byte);
    } else {
      line += character;
    }
  }
  return line;
}

}  // namespace

std::string accessLine(double when, const Exchange& exchange) {
  const auto moment = fmt::gmtime(static_cast<std::time_t>(when));
  std::string line = fmt::format("{:%Y-%m-%dT%H:%M:%S}Z {} {} {}", moment, onOneLine(exchange.request.method),
                                 onOneLine(exchange.request.path), exchange.status);
  return exchange.reason.empty() ? line : fmt::format("{} {}", line, onOneLine(exchange.reason));
}

}  // namespace vorlu::refserver
