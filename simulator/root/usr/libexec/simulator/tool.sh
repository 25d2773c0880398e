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

# note TEXT: a line in tools.log that a test's author should see.
note() {
  "$simulator/sim-tools" log-note "${0##*/}" "$1"
}

# False on a Mac that knows only one user id, and so can't give files to several users.
knowsUsers() {
  local knownIds
  read -r _ _ knownIds </proc/self/uid_map
  ((knownIds > 1))
}

# unpack ARCHIVE FOLDER: an archive or image, with names, modes, times and, where possible, owners.
unpack() {
  local -a owner=()
  knowsUsers || owner=(--no-same-owner)
  LC_ALL=en_US.UTF-8 /.linux/bin/bsdtar -xp "${owner[@]}" -f "$1" -C "$2"
}
