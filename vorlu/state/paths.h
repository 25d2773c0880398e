#pragma once

#include <string>
#include <string_view>

/// Every path of the agent's own files and of the state that it shares with other programs.
namespace vorlu::paths {

inline const std::string support = "/Library/Application Support/MOSK/Vorlu";
inline const std::string run = support + "/Run";
inline const std::string runData = run + "/runData.plist";
inline const std::string missedUpdate = run + "/missedUpdate";
inline const std::string receipts = run + "/Receipts";
inline const std::string currentTask = run + "/Current Task";
inline const std::string watchReceipt = run + "/watchReceipt.plist";
inline const std::string completeResult = run + "/completeResult";
inline const std::string errors = run + "/Errors.json";
inline const std::string offlineData = run + "/offlineData.json";
inline const std::string appInventory = run + "/appInventory.json";
inline const std::string lastReport = run + "/lastReport.json";
inline const std::string lastReportEnc = run + "/lastReportEnc.json";
inline const std::string downloads = run + "/Downloads";
inline const std::string output = run + "/Output";
inline const std::string resources = support + "/Resources";
inline const std::string icons = resources + "/Icons";
inline const std::string appIcons = resources + "/AppIcons";
inline const std::string jamfLog = support + "/Logs/JamfPro_EA.log";
inline const std::string log = "/var/log/Vorlu.log";

inline const std::string packageReceipts = "/var/db/receipts";
inline const std::string promptComponentReceipt = "/private/var/db/receipts/vorluupdateprompts.plist";
inline const std::string networkQuality = "/private/var/tmp/networkQuality.json";
inline const std::string onlineMarker = "/usr/local/bin/vorluonline";
inline const std::string jamfPreferences = "/Library/Preferences/com.jamfsoftware.jamf.plist";
inline const std::string jamf = "/usr/local/jamf/bin/jamf";

inline const std::string components = "/usr/local/bin/vorlu-ui";
inline const std::string dialogCommandFile = components + "/com.mosk.vorlu.UI.log";
inline const std::string dialogBundle = components + "/prompts/Dialog.app";
inline const std::string dialogProgram = dialogBundle + "/Contents/MacOS/Dialog";

}  // namespace vorlu::paths
