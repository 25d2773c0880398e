#!/bin/zsh
# Jamf Pro extension attribute (string): the applications that are behind the catalog, one a line, or "None".
# "Unknown" where no check has finished yet.
inventory="/Library/Application Support/MOSK/Vorlu/Run/appInventory.json"
if [[ ! -f "$inventory" ]]; then
  print -r -- "<result>Unknown</result>"
  exit 0
fi

# Names can hold what XML keeps for itself.
escape() { /usr/bin/sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g'; }
value() { /usr/bin/plutil -extract "appInventory.$1.$2" raw -o - "$inventory" 2>/dev/null; }

pending=""
index=0
while name=$(value $index appName); do
  if [[ "$(value $index updateRequired)" == "true" ]]; then
    line="$name $(value $index installedVersion) -> $(value $index latestVersion)"
    pending+="${pending:+$'\n'}$line"
  fi
  ((index++))
done
print -r -- "<result>$(print -r -- "${pending:-None}" | escape)</result>"
