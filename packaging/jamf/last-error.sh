#!/bin/zsh
# Jamf Pro extension attribute (string): the newest error that Vorlu recorded, with its time, or "None".
errors="/Library/Application Support/MOSK/Vorlu/Run/Errors.json"
escape() { /usr/bin/sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g'; }
count=$(/usr/bin/plutil -extract vorluErrors raw -o - "$errors" 2>/dev/null)
if [[ "$count" != <1-> ]]; then
  print -r -- "<result>None</result>"
  exit 0
fi
last=$((count - 1))
when=$(/usr/bin/plutil -extract "vorluErrors.$last.timeStamp" raw -o - "$errors")
what=$(/usr/bin/plutil -extract "vorluErrors.$last.message" raw -o - "$errors")
print -r -- "<result>$(print -r -- "$when: $what" | escape)</result>"
