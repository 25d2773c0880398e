#include "simulator/host/host_clock.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

namespace vorlu::simulator {

namespace {

constexpr const char* hostFile = "/private/var/db/vorlu-host.json";
constexpr double longestSlice = 0.1;   // real seconds between two looks at the host file
constexpr double wakeInterval = 0.01;  // real seconds between two questions to `wake`

double realNow() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace

HostClock HostClock::read() {
  std::ifstream file(hostFile);
  const auto host = nlohmann::json::parse(file, nullptr, false);
  if (!host.is_object() || !host.contains("clock") || !host["clock"].is_object()) return {};
  const auto& clock = host["clock"];
  const auto number = [&](const char* key, double fallback) {
    return clock.contains(key) && clock[key].is_number() ? clock[key].get<double>() : fallback;
  };
  return {number("real", 0), number("mac", 0), number("rate", 1)};
}

double HostClock::now() const {
  return mac + (realNow() - real) * rate;
}

void macSleep(double seconds, const std::function<bool()>& wake) {
  const double end = HostClock::read().now() + seconds;
  for (;;) {
    if (wake && wake()) return;
    const HostClock clock = HostClock::read();
    const double left = end - clock.now();
    if (left <= 0) return;
    const double slice = clock.rate > 0 ? left / clock.rate : longestSlice;
    std::this_thread::sleep_for(std::chrono::duration<double>(std::min(slice, wake ? wakeInterval : longestSlice)));
  }
}

}  // namespace vorlu::simulator
