# For the stand-ins that are scripts, sourced as their first act: it writes the call to tools.log.

simulator=/usr/libexec/simulator
"$simulator/sim-tools" log-call "${0##*/}" "$@"

# hostValue KEY: the key's value in the host file, nothing when the key is missing.
hostValue() {
  /.linux/bin/jq -r --arg key "$1" '.[$key] | if . == null then empty else . end' /private/var/db/vorlu-host.json
}

# fail STATUS TEXT: the text on standard error, and the end.
fail() {
  printf '%s\n' "$2" >&2
  exit "$1"
}
