#include "vorlu/policy/scheduled_rules.h"

namespace vorlu {

Trigger triggerOf(std::string_view subArgument) {
  if (subArgument == "selfservice") return Trigger::selfService;
  if (subArgument == "testprompt") return Trigger::testPrompt;
  if (subArgument == "prompt") return Trigger::prompt;
  return subArgument == "timerprompt" ? Trigger::timerPrompt : Trigger::run;
}

const char* initialRunType(Trigger trigger) {
  switch (trigger) {
    case Trigger::selfService:
      return "selfServiceInit";
    case Trigger::testPrompt:
      return "scheduledUpdateInitTestPrompt";
    case Trigger::prompt:
      return "scheduledUpdateInitTest";
    case Trigger::run:
    case Trigger::timerPrompt:
      break;
  }
  return "scheduledUpdateInit";
}

const char* requiredRunType(Trigger trigger) {
  return trigger == Trigger::selfService ? "selfServiceUpdateRequired" : "scheduledUpdateRequired";
}

PromptChoice promptChoice(DeferralMode mode, Trigger trigger, std::optional<std::int64_t> left) {
  if (mode == DeferralMode::disabled) return PromptChoice::graceDeferralsDisabled;
  if (trigger == Trigger::timerPrompt) return PromptChoice::graceOnDemand;
  if (trigger == Trigger::selfService || mode == DeferralMode::unlimited) return PromptChoice::initial;
  if (mode != DeferralMode::limited) return PromptChoice::none;
  return left.value_or(0) >= 1 ? PromptChoice::initial : PromptChoice::graceCountUsedUp;
}

}  // namespace vorlu
