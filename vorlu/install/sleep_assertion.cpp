#include "vorlu/install/sleep_assertion.h"

#include "vorlu/vorlu.h"

namespace vorlu {

void preventIdleSleep(Vorlu& vorlu, const std::string& reason) {
  vorlu.log("Preventing idle sleep...");
  if (vorlu.progress.sleepAssertion) return;
  vorlu.progress.sleepAssertion = vorlu.platform.power.createNoDisplaySleepAssertion(reason);
}

void allowIdleSleep(Vorlu& vorlu) {
  vorlu.log("Allowing idle sleep...");
  if (!vorlu.progress.sleepAssertion) return;
  vorlu.platform.power.releaseAssertion(*vorlu.progress.sleepAssertion);
  vorlu.progress.sleepAssertion.reset();
}

IdleSleepHold::IdleSleepHold(Vorlu& vorlu, const std::string& reason) : vorlu_(vorlu) {
  preventIdleSleep(vorlu_, reason);
}

IdleSleepHold::~IdleSleepHold() {
  if (vorlu_.progress.sleepAssertion) allowIdleSleep(vorlu_);
}

}  // namespace vorlu
