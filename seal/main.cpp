// vorlu-seal: turns a site file into the source that seals its texts into the agent.

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "seal/generated_source.h"
#include "seal/small_file.h"

namespace {

using namespace vorlu;
using namespace vorlu::seal;

std::string escapedBlanks(const std::string& path) {
  std::string escaped;
  for (const char character : path) escaped += character == ' ' ? "\\ " : std::string(1, character);
  return escaped;
}

/// Ninja reads it: a key file that changes or vanishes makes the source stale.
std::string dependencyFile(const std::string& output, const std::string& keyFolder) {
  std::string rule = escapedBlanks(output) + ":";
  for (const char* name : {privateKeyFile, publicKeyFile, signingSecretFile, decoysFile}) {
    rule += " " + escapedBlanks((std::filesystem::absolute(keyFolder) / name).string());
  }
  return rule + "\n";
}

bool isCurrent(const std::string& output, const std::string& stamp) {
  const auto source = readSmallFile(output);
  return source && source->starts_with(stamp);
}

Status sealInto(const std::string& siteFile, const std::string& keyFolder, const std::string& output) {
  const auto site = readSiteFile(siteFile);
  if (!site) return site.failure();
  const auto keys = openOrMakeKeys(keyFolder);
  if (!keys) return keys.failure();
  if (Status status = replaceFile(output + ".d", dependencyFile(output, keyFolder), 0644); !status) return status;

  const std::string stamp = sourceStamp(*site, *keys);
  if (isCurrent(output, stamp)) return success();
  const auto sealed = sealSite(*site, *keys);
  if (!sealed) return Failure{fmt::format("{}: {}", siteFile, sealed.error())};
  // The source holds the private key, hidden but not locked.
  return replaceFile(output, generatedSource(stamp, *sealed), 0600);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    fmt::print(stderr, "usage: vorlu-seal SITE.json KEYDIR OUT.cpp\n");
    return 2;
  }
  try {
    if (const Status status = sealInto(argv[1], argv[2], argv[3]); !status) {
      fmt::print(stderr, "vorlu-seal: {}\n", status.error());
      return 1;
    }
  } catch (const std::exception& error) {
    fmt::print(stderr, "vorlu-seal: {}\n", error.what());
    return 1;
  }
  return 0;
}
