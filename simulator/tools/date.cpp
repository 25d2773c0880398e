#include <fmt/format.h>
#include <stdlib.h>
#include <time.h>

#include <cmath>
#include <optional>

#include "simulator/host/host_clock.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

struct Request {
  bool utc = false;
  std::optional<time_t> when;              // -r SECONDS
  std::optional<std::string> inputFormat;  // -f FORMAT VALUE
  std::string inputValue;
  std::string format = "%a %b %e %H:%M:%S %Z %Y";
};

std::optional<Request> parse(const Arguments& arguments) {
  Request request;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool more = i + 1 < arguments.size();
    if (argument.starts_with("+")) {
      request.format = argument.substr(1);
    } else if (argument == "-u") {
      request.utc = true;
    } else if (argument == "-r" && more) {
      request.when = std::strtoll(arguments[++i].c_str(), nullptr, 10);
    } else if ((argument == "-f" || argument == "-jf") && i + 2 < arguments.size()) {
      request.inputFormat = arguments[++i];
      request.inputValue = arguments[++i];
    } else if (argument != "-j") {
      return std::nullopt;
    }
  }
  return request;
}

// The moment that is asked for; nothing when the value doesn't fit its format. Fields it doesn't name are those of now.
std::optional<time_t> moment(const Request& request) {
  const auto now = static_cast<time_t>(std::floor(HostClock::read().now()));
  if (request.when) return request.when;
  if (!request.inputFormat) return now;
  tm fields{};
  localtime_r(&now, &fields);
  const char* rest = strptime(request.inputValue.c_str(), request.inputFormat->c_str(), &fields);
  if (rest == nullptr || *rest != '\0') return std::nullopt;
  fields.tm_isdst = -1;
  return mktime(&fields);
}

}  // namespace

int runDate(const Arguments& arguments) {
  const auto request = parse(arguments);
  if (!request) {
    fmt::print(stderr, "usage: date [-ju] [-r seconds] [-f input_fmt value] [+output_fmt]\n");
    return 1;
  }
  if (request->utc) setenv("TZ", "UTC0", 1);
  tzset();
  const auto when = moment(*request);
  if (!when) {
    fmt::print(stderr, "Failed conversion of ``{}'' using format ``{}''\n", request->inputValue, *request->inputFormat);
    return 1;
  }
  tm fields{};
  localtime_r(&*when, &fields);
  char text[4096];
  const std::size_t length = strftime(text, sizeof text, request->format.c_str(), &fields);
  fmt::print("{}\n", std::string_view(text, length));
  return 0;
}

}  // namespace vorlu::simulator
