#pragma once

#include "vorlu/platform/console.h"
#include "vorlu/state/site.h"

namespace vorlu {

/// What the command tells of itself on standard output.
class ConsoleIO {
 public:
  ConsoleIO(Console& console, const Site& site) : console_(console), site_(site) {}
  void printUsage() const;

 private:
  Console& console_;
  const Site& site_;
};

/// Name, maker, support address and usage: the answer to a command line without arguments.
void printBanner(Console& console, const Site& site);

}  // namespace vorlu
