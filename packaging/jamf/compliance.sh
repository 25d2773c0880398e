#!/bin/zsh
# Jamf Pro extension attribute (string): when this computer last had no pending application update.
# "Unknown" where Vorlu has not run yet.
runData="/Library/Application Support/MOSK/Vorlu/Run/runData.plist"
compliant=$(/usr/libexec/PlistBuddy -c "Print :LastCompliant" "$runData" 2>/dev/null)
[[ -z "$compliant" || "$compliant" == "N/A" ]] && compliant="Unknown"
print -r -- "<result>$compliant</result>"
