#include "reference/sample_profile.h"

#include <array>
#include <string_view>
#include <variant>

#include "vorlu/state/property_list.h"

namespace vorlu::reference {
namespace {

constexpr std::string_view domain = "com.mosk.vorlu.preferences";

/// A list with one text.
struct ListOf {
  std::string_view text;
};

struct Setting {
  std::string_view path;
  std::variant<bool, std::int64_t, std::string_view, ListOf> value;
};

/// Sections one after the other, each whole.
constexpr std::array settings = {
    Setting{"GeneralOptions.hourlyCheck", true},
    Setting{"GeneralOptions.updatePrompts", true},
    Setting{"GeneralOptions.autoUpdate", true},
    Setting{"GeneralOptions.excludedAppUpdates", ListOf{"examplebeta"}},
    Setting{"ScheduledUpdates.deferralConfiguration.deferralOption", std::string_view("specifyDeferralLimit")},
    Setting{"ScheduledUpdates.deferralConfiguration.specifyLimit", std::int64_t{3}},
    Setting{"ScheduledUpdates.runFrequency.runType", std::string_view("specifyFrequency")},
    Setting{"ScheduledUpdates.runFrequency.frequencyOption", std::string_view("oneWeek")},
    Setting{"ScheduledUpdates.runFrequency.frequencyElapsedMode", std::string_view("recurringPromptMode")},
    Setting{"ScheduledUpdates.runFrequency.deferralWindow", std::int64_t{240}},
    Setting{"ScheduledUpdates.runLimitations.mondayStartTime", std::string_view("09:00")},
    Setting{"ScheduledUpdates.runLimitations.mondayEndTime", std::string_view("17:00")},
    Setting{"ScheduledUpdates.runLimitations.tuesdayStartTime", std::string_view("09:00")},
    Setting{"ScheduledUpdates.runLimitations.tuesdayEndTime", std::string_view("17:00")},
    Setting{"ScheduledUpdates.runLimitations.wednesdayStartTime", std::string_view("09:00")},
    Setting{"ScheduledUpdates.runLimitations.wednesdayEndTime", std::string_view("17:00")},
    Setting{"ScheduledUpdates.runLimitations.thursdayStartTime", std::string_view("09:00")},
    Setting{"ScheduledUpdates.runLimitations.thursdayEndTime", std::string_view("17:00")},
    Setting{"ScheduledUpdates.runLimitations.fridayStartTime", std::string_view("09:00")},
    Setting{"ScheduledUpdates.runLimitations.fridayEndTime", std::string_view("14:00")},
    Setting{"ScheduledUpdates.runLimitations.saturday", false},
    Setting{"ScheduledUpdates.runLimitations.sunday", false},
    Setting{"ScheduledUpdates.gracePeriodMinutes", std::int64_t{30}},
    Setting{"ScheduledUpdates.initialPromptOverlayIcon", std::string_view("selfservice")},
    Setting{"ScheduledUpdates.appListType", std::string_view("vertical")},
    Setting{"ScheduledUpdates.refreshInterval", std::int64_t{60}},
    Setting{"ScheduledUpdates.acceptableAppBundleIDs", ListOf{"com.apple.iWork.Keynote"}},
    Setting{"ScheduledUpdates.acceptableAppAssertions", ListOf{"zoom.us"}},
    Setting{"ScheduledUpdates.acceptableDNDMode", true},
    Setting{"ScheduledUpdates.acceptableCameraUsage", true},
    Setting{"ScheduledUpdates.acceptableScreenSharing", true},
    Setting{"ForcedUpdates.acceptableAppAssertions", ListOf{"zoom.us"}},
    Setting{"ForcedUpdates.acceptableCameraUsage", true},
};

void writeValue(Encoder& out, bool value) {
  out.boolean(value);
}
void writeValue(Encoder& out, std::int64_t value) {
  out.integer(value);
}
void writeValue(Encoder& out, std::string_view value) {
  out.string(value);
}
void writeValue(Encoder& out, ListOf list) {
  out.beginArray();
  out.string(list.text);
  out.endArray();
}

/// Writes the settings from `next` on whose paths begin with `section`, and leaves `next` behind them.
void writeSection(Encoder& out, std::string_view section, const Setting*& next) {
  out.beginDictionary();
  while (next != settings.data() + settings.size() && next->path.starts_with(section)) {
    const std::string_view rest = next->path.substr(section.size());
    const std::size_t dot = rest.find('.');
    out.key(rest.substr(0, dot));
    if (dot == std::string_view::npos) {
      std::visit([&](const auto& value) { writeValue(out, value); }, next->value);
      ++next;
    } else {
      writeSection(out, next->path.substr(0, section.size() + dot + 1), next);
    }
  }
  out.endDictionary();
}

void writeSettings(Encoder& out) {
  const Setting* first = settings.data();
  writeSection(out, "", first);
}

void addText(Encoder& out, std::string_view key, std::string_view value) {
  out.key(key);
  out.string(value);
}

/// What profile and payload both begin with.
void addHead(Encoder& out, std::string_view name, std::string_view identifier, std::string_view type,
             std::string_view uuid) {
  addText(out, "PayloadDisplayName", name);
  addText(out, "PayloadIdentifier", identifier);
  addText(out, "PayloadType", type);
  addText(out, "PayloadUUID", uuid);
  out.key("PayloadVersion");
  out.integer(1);
}

/// The settings as those that a computer's user can't change.
void writePayload(Encoder& out) {
  out.beginDictionary();
  addHead(out, "Vorlu", "com.example.vorlu.pilot.preferences", "com.apple.ManagedClient.preferences",
          "6B1F4C0E-53D2-4E7A-9C41-7A0D2E8B9F12");
  for (const std::string_view key : {std::string_view("PayloadContent"), domain}) {
    out.key(key);
    out.beginDictionary();
  }
  out.key("Forced");
  out.beginArray();
  out.beginDictionary();
  out.key("mcx_preference_settings");
  writeSettings(out);
  out.endDictionary();
  out.endArray();
  for (int level = 0; level < 3; ++level) out.endDictionary();
}

}  // namespace

std::string sampleProfile() {
  return writePropertyList([](Encoder& out) {
    out.beginDictionary();
    addHead(out, "Vorlu pilot", "com.example.vorlu.pilot", "Configuration", "2D9A7E34-8F16-4B0C-A5E8-1C3F60B7D245");
    addText(out, "PayloadDescription", "Settings of the Vorlu agent for a first group of Macs");
    addText(out, "PayloadOrganization", "Example");
    addText(out, "PayloadScope", "System");
    out.key("PayloadContent");
    out.beginArray();
    writePayload(out);
    out.endArray();
    out.endDictionary();
  });
}

std::string samplePreferences() {
  return writePropertyList(writeSettings);
}

}  // namespace vorlu::reference
