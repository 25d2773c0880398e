#!/bin/zsh
# Jamf Pro policy script: marks an application for a forced update. The agent's next run asks its user, or updates it at
# once where it isn't in use, and takes the mark away when that has succeeded.
#   $4  the application's identifier in the catalog
#   $5  deferrals that the user has; empty or "N/A" allows none
#   $6  minutes before the application is quit once no deferral is left; empty is 15
#   $7  minutes between two deferrals; empty is 60
identifier=$4 deferrals=${5:-N/A} grace=${6:-N/A} period=$7
receipts="/Library/Application Support/MOSK/Vorlu/Run/Receipts"

fail() {
  print -u2 -r -- "mark-forced: $1"
  exit 1
}
[[ -n "$identifier" && "$identifier" != */* ]] || fail "parameter 4 needs an identifier of the catalog"
[[ "$deferrals" == (N/A|<->) ]] || fail "parameter 5 takes a number of deferrals or N/A: $deferrals"
[[ "$grace" == (N/A|<->) ]] || fail "parameter 6 takes a number of minutes or N/A: $grace"
[[ "$period" == (|<->) ]] || fail "parameter 7 takes a number of minutes: $period"
[[ -d "${receipts:h}" ]] || fail "Vorlu has not run on this computer yet"

umask 022
/bin/mkdir -p "$receipts"
receipt="$receipts/$identifier Patch Receipt.plist"
/bin/cat >"$receipt.new" <<PLIST
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>deferrals</key>
	<string>$deferrals</string>
	<key>gracePeriod</key>
	<string>$grace</string>${period:+
	<key>deferralPeriod</key>
	<integer>$period</integer>}
</dict>
</plist>
PLIST
# Renamed when whole: a run reads the folder at any time.
/bin/mv "$receipt.new" "$receipt" || fail "$receipt could not be written"
print -r -- "$identifier is marked for a forced update"
