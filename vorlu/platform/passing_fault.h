#pragma once

#include <algorithm>
#include <array>
#include <cerrno>

#include "vorlu/platform/result.h"

namespace vorlu {

/// Whether the system couldn't do it this time. It says nothing of the item itself, which may be sound.
inline bool isPassingFault(const Failure& failure) {
  constexpr std::array faults = {EIO, EMFILE, ENFILE, EINTR, ENOMEM};
  return std::find(faults.begin(), faults.end(), failure.code) != faults.end();
}

}  // namespace vorlu
