#include "vorlu/state/property_list.h"

#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "vorlu/install/server_call_limit.h"
#include "vorlu/policy/deferrals.h"
#include "vorlu/state/forced_receipt.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/preferences.h"
#include "vorlu/state/receipts.h"
#include "vorlu/state/run_data.h"

namespace vorlu::fuzz {
namespace {

/// Everything that a reader may ask of a node.
void visit(Node& node) {
  switch (node.kind()) {
    case NodeKind::array:
      return node.forEachElement(visit);
    case NodeKind::dictionary:
      return node.forEachMember([](std::string_view, Node& child) { visit(child); });
    case NodeKind::string:
      node.text();
      break;
    case NodeKind::integer:
    case NodeKind::number:
      node.integer();
      break;
    case NodeKind::boolean:
      node.boolean();
      break;
    default:
      break;
  }
}

template <class T>
void readAndWrite(std::string_view bytes) {
  const auto decoded = decodePropertyList<T>(bytes);
  if (!decoded) return expect(!decoded.error().empty(), "a failure has a text");
  const std::string xml = encodePropertyList(*decoded);
  const auto again = decodePropertyList<T>(xml);
  expect(again.ok(), "what was encoded decodes", xml, again ? "" : again.error());
  expectSame(encodePropertyList(*again), xml, "encoding is stable");
}

/// A change of three keys leaves all the others, and what can't be encoded is told from what can.
void changeRunData(std::string_view bytes) {
  auto dictionary = PropertyDictionary::parse(bytes);
  if (!dictionary) return;
  dictionary->set("DeferCount", std::string_view("2"));
  dictionary->set("LastRun", std::int64_t{5});
  dictionary->set("UserDeferred", true);
  const std::string xml = dictionary->toXml();
  if (xml.empty()) return;
  const auto before = decodePropertyList<RunDataFile>(bytes);
  const auto after = decodePropertyList<RunDataFile>(xml);
  expect(PropertyDictionary::parse(xml).ok(), "a changed dictionary is one", xml);
  if (!before) return;
  expect(after.ok(), "a change of readable run data stays readable", xml, after ? "" : after.error());
  RunDataFile expected = *before;
  expected.DeferCount = "2";
  expected.LastRun = 5;
  expected.UserDeferred = true;
  expectSame(encodePropertyList(*after), encodePropertyList(expected), "the other keys stay");
}

/// The agent counts and reckons with whatever numbers stand there.
void reckon(std::string_view bytes) {
  const auto file = decodePropertyList<RunDataFile>(bytes);
  if (!file) return;
  FuzzedMac& mac = FuzzedMac::shared();
  serverCallsExpired(*file, 1772452800);
  deferralSetUp(DeferralMode::limited, *file);
  Vorlu& vorlu = mac.fresh();
  mac.write(paths::runData, std::string(bytes));
  takeServerCall(vorlu);
  for (const auto selector : {RunDataSelector::deferralUsed, RunDataSelector::nextUpdateAttempt}) {
    updateRunData(vorlu, selector);
    expect(loadRunData(mac.files).ok(), "run data stays readable", mac.read(paths::runData));
  }
}

/// A receipt's keys are read one by one: where the whole decodes, they say the same.
void readReceipt(std::string_view bytes) {
  FuzzedMac& mac = FuzzedMac::shared();
  mac.write("/private/tmp/receipt", std::string(bytes));
  const ReceiptData byKey = loadForcedReceipt(mac.files, "/private/tmp/receipt");
  if (const auto whole = decodePropertyList<ReceiptData>(bytes))
    expectSame(encodePropertyList(byKey), encodePropertyList(*whole), "key by key is as the whole");
  expect(graceMinutesOf(byKey) >= 1, "there is a grace period");
  deferralsOf(byKey);
}

}  // namespace

/// Preferences, run data, receipts; XML and binary.
FUZZ_TARGET(property_list) {
  static_cast<void>(readPropertyList(input, visit));
  readAndWrite<CustomPrefs>(input);
  readAndWrite<RunDataFile>(input);
  readAndWrite<ReceiptData>(input);
  readAndWrite<WatchReceiptData>(input);
  changeRunData(input);
  reckon(input);
  readReceipt(input);
}

}  // namespace vorlu::fuzz
