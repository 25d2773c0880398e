// vorlu-server: the reference server, serving one data folder until SIGTERM, and the commands of its reports' owner.

#include <fmt/format.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "refserver/access_line.h"
#include "refserver/host_clock.h"
#include "refserver/options.h"
#include "refserver/owner_commands.h"
#include "refserver/sample_data.h"
#include "refserver/server.h"

namespace {

using namespace vorlu;
using namespace vorlu::refserver;

void printLine(const std::string& line) {
  fmt::print("{}\n", line);
  std::fflush(stdout);
}

/// Before any thread starts, so that none of them takes the signals.
sigset_t blockEndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

Status init(const Options& options) {
  const auto site = seal::readSiteFile(options.siteFile);
  if (!site) return site.failure();
  return makeSampleData(options.initFolder, (*site)[SiteText::serverDataURL]);
}

Status renew(const Options& options) {
  const ClockFunction clock = options.clockFile.empty() ? systemSeconds : hostClock(options.clockFile);
  return renewTimestamp(options.renewFolder, clock());
}

Result<ServerConfig> configure(const Options& options) {
  auto site = seal::readSiteFile(options.siteFile);
  if (!site) return site.failure();
  auto keys = seal::readServerKeys(options.keyFolder);
  if (!keys) return Failure{fmt::format("{} (building the agent makes the keys)", keys.error())};
  ServerConfig config{.dataFolder = options.dataFolder, .site = std::move(*site), .keys = std::move(*keys)};
  config.address = options.address;
  config.port = options.port;
  config.keepExchanges = false;
  if (!options.clockFile.empty()) config.clock = hostClock(options.clockFile);
  config.onExchange = [clock = config.clock](const Exchange& exchange) { printLine(accessLine(clock(), exchange)); };
  return config;
}

Status serve(const Options& options) {
  const sigset_t endSignals = blockEndSignals();
  std::signal(SIGPIPE, SIG_IGN);
  auto config = configure(options);
  if (!config) return config.failure();
  Server server(std::move(*config));
  if (const auto port = server.start(); !port) return port.failure();
  printLine("listening on " + server.baseUrl());
  int received = 0;
  sigwait(&endSignals, &received);
  server.stop();
  return success();
}

int ownerCommand(const std::vector<std::string>& arguments) {
  const OwnerOutcome outcome = runOwnerCommand(arguments);
  if (outcome.status == 0) {
    fmt::print("{}", outcome.text);
  } else {
    fmt::print(stderr, "vorlu-server: {}\n", outcome.text);
    if (outcome.status == 2) fmt::print(stderr, "{}\n{}\n", usage, ownerUsage);
  }
  return outcome.status;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    if (isOwnerCommand(arguments)) return ownerCommand(arguments);
    const auto options = parseOptions(arguments);
    if (!options) {
      fmt::print(stderr, "vorlu-server: {}\n{}\n{}\n", options.error(), usage, ownerUsage);
      return 2;
    }
    const Status status = !options->initFolder.empty()    ? init(*options)
                          : !options->renewFolder.empty() ? renew(*options)
                                                          : serve(*options);
    if (status) return 0;
    fmt::print(stderr, "vorlu-server: {}\n", status.error());
  } catch (const std::exception& error) {
    fmt::print(stderr, "vorlu-server: {}\n", error.what());
  }
  return 1;
}
