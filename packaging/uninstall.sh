#!/bin/zsh
# Removes Vorlu from this Mac: schedule, agent, prompts, state, cache, keys and log rotation. The applications that it
# installed stay. Its log and the settings in /Library/Preferences stay, too, unless --purge is given; a configuration
# profile goes with its MDM.
#
#   sudo uninstall.sh [--purge]
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
/bin/launchctl bootout system/com.mosk.vorlu 2>/dev/null
/usr/bin/killall -TERM vorlu 2>/dev/null
for _ in {1..60}; do
  /usr/bin/pgrep -x vorlu >/dev/null || break
  /bin/sleep 1
done
if /usr/bin/pgrep -x vorlu >/dev/null; then
  print -u2 -r -- "uninstall.sh: vorlu is still at work after a minute. Nothing was removed; run this again later"
  exit 1
fi

# The keychain items can only be removed while the agent is there to name them.
[[ -x /usr/local/bin/vorlu ]] && /usr/local/bin/vorlu -dk >/dev/null
for prompt in $(/usr/bin/pgrep -f "$components/prompts/Dialog.app/"); do
  /bin/kill "$prompt" 2>/dev/null
done

items=("$daemon" /private/etc/newsyslog.d/vorlu.conf "$support" "$components"
  /usr/local/bin/vorlu /usr/local/bin/vorluctl /usr/local/bin/vorluonline /usr/local/share/vorlu
  /usr/local/share/man/man8/vorlu.8 /usr/local/share/man/man1/vorluctl.1
  /usr/local/share/zsh/site-functions/_vorlu /usr/local/share/bash-completion/completions/vorlu
  /private/var/tmp/networkQuality.json)
[[ -n "$purge" ]] &&
  items+=(/Library/Preferences/com.mosk.vorlu.preferences.plist /private/var/log/Vorlu.log{,.*}(N))
/bin/rm -rf -- "${items[@]}"
/bin/rmdir "/Library/Application Support/MOSK" 2>/dev/null
for receipt in com.mosk.vorlu vorluupdateprompts; do
  /usr/sbin/pkgutil --forget "$receipt" >/dev/null 2>&1
done
print -r -- "Vorlu has been removed."
