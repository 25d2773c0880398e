#include "refserver/options.h"

#include <fmt/format.h>

#include <charconv>

#include "seal/site_file.h"

namespace vorlu::refserver {

namespace {

Result<int> parsePort(const std::string& text) {
  int port = -1;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || stop != text.data() + text.size() || port < 0 || port > 65535) {
    return Failure{fmt::format("\"{}\" is no port", text)};
  }
  return port;
}

}  // namespace

Status readOptions(const std::vector<std::string>& arguments, const std::map<std::string, std::string*>& targets) {
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const auto target = targets.find(arguments[i]);
    if (target == targets.end()) return Failure{fmt::format("unknown option {}", arguments[i])};
    if (i + 1 == arguments.size()) return Failure{fmt::format("{} needs a value", arguments[i])};
    *target->second = arguments[i + 1];
  }
  return success();
}

Result<Options> parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  std::string port = std::to_string(options.port);
  const Status read = readOptions(arguments, {{"--data", &options.dataFolder},
                                              {"--init", &options.initFolder},
                                              {"--renew", &options.renewFolder},
                                              {"--site", &options.siteFile},
                                              {"--keys", &options.keyFolder},
                                              {"--clock", &options.clockFile},
                                              {"--listen", &options.address},
                                              {"--port", &port}});
  if (!read) return read.failure();
  const auto parsedPort = parsePort(port);
  if (!parsedPort) return parsedPort.failure();
  options.port = *parsedPort;
  const int jobs = !options.dataFolder.empty() + !options.initFolder.empty() + !options.renewFolder.empty();
  if (jobs != 1) return Failure{"one of --data, --init and --renew is needed"};
  if (options.keyFolder.empty()) options.keyFolder = seal::defaultKeyFolder(options.siteFile);
  return options;
}

}  // namespace vorlu::refserver
