#include "ctl/fate.h"

namespace vorlu::ctl {

const char* nameOf(Fate fate) {
  switch (fate) {
    case Fate::notInCatalog:
      return "notInCatalog";
    case Fate::notManaged:
      return "notManaged";
    case Fate::notInstalled:
      return "notInstalled";
    case Fate::unknown:
      return "unknown";
    case Fate::upToDate:
      return "upToDate";
    case Fate::blocked:
      return "blocked";
    case Fate::update:
      return "update";
    case Fate::prompt:
      return "prompt";
    case Fate::gracePrompt:
      return "gracePrompt";
    case Fate::waits:
      break;
  }
  return "waits";
}

}  // namespace vorlu::ctl
