#!/bin/zsh
# Jamf Pro extension attribute, data type Date: when this computer last had no pending update. Empty where it never had.
# A user's deferral sets it to 15 days ago.
runData="/Library/Application Support/MOSK/Vorlu/Run/runData.plist"

compliant=""
# Without the file PlistBuddy would print a notice in place of the value.
[[ -f "$runData" ]] && compliant=$(/usr/libexec/PlistBuddy -c "Print :LastCompliant" "$runData" 2>/dev/null)
# From "Nov 22 2026 09:00:00 +0000" to Jamf Pro's form; "N/A" is no date and leaves the attribute empty.
compliant=$(LC_ALL=C /bin/date -j -f "%b %d %Y %H:%M:%S %z" "$compliant" "+%Y-%m-%d %H:%M:%S" 2>/dev/null)
print -r -- "<result>$compliant</result>"
