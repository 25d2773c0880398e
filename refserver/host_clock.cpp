#include "refserver/host_clock.h"

#include <nlohmann/json.hpp>

#include "refserver/server.h"
#include "seal/small_file.h"

namespace vorlu::refserver {

namespace {

double macSeconds(const std::string& hostFile, double real) {
  const auto text = seal::readSmallFile(hostFile);
  if (!text) return real;
  try {
    const auto clock = nlohmann::json::parse(*text).at("clock");
    return clock.at("mac").get<double>() + (real - clock.at("real").get<double>()) * clock.at("rate").get<double>();
  } catch (const nlohmann::json::exception&) {
    return real;
  }
}

}  // namespace

ClockFunction hostClock(std::string hostFile) {
  return [hostFile = std::move(hostFile)] { return macSeconds(hostFile, systemSeconds()); };
}

}  // namespace vorlu::refserver
