#pragma once

#include <string>
#include <vector>

namespace vorlu::refserver {

inline constexpr const char* ownerUsage =
    "       vorlu-server report list [--data DIR]\n"
    "       vorlu-server report show ID --key private.pem [--data DIR]\n"
    "       vorlu-server keygen [--out private.pem]";

/// Whether a command line is the report owner's: "report …" or "keygen …".
bool isOwnerCommand(const std::vector<std::string>& arguments);

/// What a command prints and ends with.
struct OwnerOutcome {
  int status = 0;    ///< 1 after a failure, 2 when the command line isn't understood
  std::string text;  ///< the result, or what went wrong
};
OwnerOutcome runOwnerCommand(const std::vector<std::string>& arguments);

}  // namespace vorlu::refserver
