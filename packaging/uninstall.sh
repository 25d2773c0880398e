#!/bin/zsh
# Removes Vorlu from this Mac: scheduler, agent, prompts, state, cache, keys and log rotation. Applications that it
# installed stay, and so does its log, unless --purge is given.
#
#   sudo packaging/uninstall.sh [--purge]
set -u
purge=""
case "${1:-}" in
  --purge) purge=1 ;;
  "") ;;
  *) print -u2 -r -- "usage: uninstall.sh [--purge]"; exit 2 ;;
esac
if ((EUID != 0)); then
  print -u2 -r -- "uninstall.sh: run as root"
  exit 1
fi

daemon="/Library/LaunchDaemons/com.mosk.vorlu.plist"
support="/Library/Application Support/MOSK/Vorlu"
components="/usr/local/bin/vorlu-ui"

# No new run starts, and a run under way ends what it does in good order.
[[ -f "$daemon" ]] && /bin/launchctl bootout system "$daemon" 2>/dev/null
/usr/bin/killall -TERM vorlu 2>/dev/null
for _ in {1..60}; do
  /usr/bin/pgrep -x vorlu >/dev/null || break
  /bin/sleep 1
done

# The keychain items can only be removed while the agent is there to name them.
[[ -x /usr/local/bin/vorlu ]] && /usr/local/bin/vorlu -dk >/dev/null
/usr/bin/killall Dialog 2>/dev/null

for item in "$daemon" /usr/local/bin/vorlu /usr/local/bin/vorluonline "$components" "$support" \
  /etc/newsyslog.d/vorlu.conf /private/var/tmp/networkQuality.json; do
  [[ -e "$item" || -L "$item" ]] && /bin/rm -rf -- "$item"
done
/bin/rmdir "/Library/Application Support/MOSK" 2>/dev/null
for receipt in vorlu vorluupdateprompts; do
  /bin/rm -f -- "/private/var/db/receipts/$receipt.plist" "/private/var/db/receipts/$receipt.bom"
done
[[ -n "$purge" ]] && /bin/rm -f -- /var/log/Vorlu.log(N) /var/log/Vorlu.log.*(N)
print -r -- "Vorlu has been removed."
