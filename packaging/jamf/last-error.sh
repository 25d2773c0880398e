#!/bin/zsh
# Jamf Pro extension attribute, data type String: the newest error of the last 7 days with its time, or "None".
errors="/Library/Application Support/MOSK/Vorlu/Run/Errors.json"
maximumDays=7

# The form that PlistBuddy reads; plutil itself gives single values only from macOS 12.
list=$(/usr/bin/mktemp /private/tmp/vorlu-errors.XXXXXX) || exit 1
trap '/bin/rm -f "$list"' EXIT
if ! /usr/bin/plutil -convert xml1 -o "$list" "$errors" 2>/dev/null; then
  print -r -- "<result>None</result>"
  exit 0
fi

value() { /usr/libexec/PlistBuddy -c "Print :vorluErrors:$1:$2" "$list" 2>/dev/null; }
# A message can hold what XML keeps for itself.
escape() { /usr/bin/sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g'; }

# The record only grows, so the newest error is the last.
last=""
for ((index = 0; ; index++)); do
  time=$(value $index timeStamp) || break
  last=$index
done
result="None"
if [[ -n "$last" ]]; then
  time=$(value $last timeStamp)
  when=$(LC_ALL=C /bin/date -j -f "%b %d %Y %H:%M:%S %z" "$time" +%s 2>/dev/null)
  # A time that can't be read doesn't hide its error.
  if [[ -z "$when" ]] || (($(/bin/date +%s) - when < maximumDays * 86400)); then
    result="$time: $(value $last message)"
  fi
fi
print -r -- "<result>$(print -r -- "$result" | escape)</result>"
