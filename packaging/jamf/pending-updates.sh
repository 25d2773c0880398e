#!/bin/zsh
# Jamf Pro extension attribute, data type String: the applications that are behind the catalog and may be updated, one a
# line, or "None". "Unknown" where no check has finished yet.
inventory="/Library/Application Support/MOSK/Vorlu/Run/appInventory.json"

# The form that PlistBuddy reads; plutil itself gives single values only from macOS 12.
list=$(/usr/bin/mktemp /private/tmp/vorlu-pending.XXXXXX) || exit 1
trap '/bin/rm -f "$list"' EXIT
if ! /usr/bin/plutil -convert xml1 -o "$list" "$inventory" 2>/dev/null; then
  print -r -- "<result>Unknown</result>"
  exit 0
fi

value() { /usr/libexec/PlistBuddy -c "Print :appInventory:$1:$2" "$list" 2>/dev/null; }
# Names can hold what XML keeps for itself.
escape() { /usr/bin/sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g'; }

pending=""
for ((index = 0; ; index++)); do
  name=$(value $index appName) || break
  [[ "$(value $index updateRequired) $(value $index updatesAllowed)" == "true true" ]] || continue
  pending+="${pending:+$'\n'}$name $(value $index installedVersion) -> $(value $index latestVersion)"
done
print -r -- "<result>$(print -r -- "${pending:-None}" | escape)</result>"
