#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>

#include "fuzz/target.h"

namespace {
vorlu::fuzz::Target chosen = nullptr;
}

/// One program for all targets: VORLU_FUZZ_TARGET names the one to run.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* const name = std::getenv("VORLU_FUZZ_TARGET");
  const auto found = vorlu::fuzz::targets().find(name ? name : "");
  if (found == vorlu::fuzz::targets().end()) {
    fmt::print(stderr, "fuzz: VORLU_FUZZ_TARGET must be one of:");
    for (const auto& [known, target] : vorlu::fuzz::targets()) fmt::print(stderr, " {}", known);
    fmt::print(stderr, "\n");
    std::exit(2);
  }
  chosen = found->second;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  chosen({reinterpret_cast<const char*>(data), size});
  return 0;
}
