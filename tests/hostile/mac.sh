# Sourced by the hostile tests: a server and a simulated Mac for many apps at once, and what must hold behind them.
# VORLU_BUILD names the build folder. The server's port is the one that the agent knows, so one runs at a time.

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.." && pwd)
export VORLU_BUILD=${VORLU_BUILD:-$root/build/dev}
export LC_ALL=C.UTF-8
. "$root/simulator/root/usr/libexec/simulator/disk-image.sh" # appendTrailer
work=$(mktemp -d)
mac=$work/mac data=$work/server shelf=$work/shelf
run=$mac/Library/Application\ Support/MOSK/Vorlu/Run
violations=0 cases=0 server=''
trap endAll EXIT
mkdir "$shelf"

endAll() {
  "$root/simulator/mac" shutdown "$mac" || true
  [[ -z $server ]] || kill "$server" 2>/dev/null || true
  [[ -n ${KEEP:-} ]] || rm -rf "$work"
}

die() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

# violation CASE TEXT
violation() {
  ((++violations))
  printf 'VIOLATION %s: %s\n' "$1" "$2"
}

# finish WHAT: the count that this test is about, and its status.
finish() {
  printf '%s: %d cases, %d violations\n' "$1" "$cases" "$violations"
  ((violations == 0))
}

inside() { "$root/simulator/mac" run "$mac" "$@"; }

newMac() {
  if ! "$root/simulator/mac" check; then
    [[ -z ${CI:-} ]] || die "a build server must be able to make a sandbox"
    exit 77 # skipped
  fi
  "$root/simulator/mac" new "$mac" --agent "$VORLU_BUILD/vorlu"
}

# fastClock [TIME]: the agent's pauses pass thirty times as fast, from now or that time on.
fastClock() {
  local now
  now=$(date +%s)
  "$root/simulator/mac" host "$mac" clock "{\"real\": $now, \"mac\": ${1:-$now}, \"rate\": 30}"
}

# startServer: the catalog is the JSON objects in $work/catalog.
startServer() {
  "$VORLU_BUILD/refserver/vorlu-server" --init "$data" --site "$root/site/local.json" >/dev/null
  jq -s . "$work/catalog" >"$data/catalog.json"
  mkdir -p "$data/files"
  mv "$shelf"/* "$data/files"
  "$VORLU_BUILD/refserver/vorlu-server" --data "$data" --site "$root/site/local.json" \
    --clock "$mac/private/var/db/vorlu-host.json" >"$work/server.log" 2>&1 &
  server=$!
  for ((i = 0; i < 300; ++i)); do
    ! curl -sf -o /dev/null http://127.0.0.1:8642/connectivity || return 0
    sleep 0.1
  done
  die "the server didn't start: $(<"$work/server.log")"
}

# macListing: everything on the Mac but what the agent, its server's apps and the simulator's tools may write.
macListing() {
  (cd "$mac" && find . \( -path ./proc -o -path ./dev -o -path ./.linux -o -path ./.mac -o -path ./private/var/log \
    -o -path './Library/Application Support/MOSK' -o -path ./private/var/run -o -path ./private/var/db/receipts \
    -o -path './Applications/*' -o -path ./private/var/db/vorlu-host.json -o -path ./private/var/tmp/networkQuality.json \
    -o -path ./usr/local/bin/vorlu-ui/com.mosk.vorlu.UI.log \) -prune -o \
    ! -path ./Applications ! -path ./Volumes ! -path ./private/tmp ! -path './Library/Application Support' \
    ! -path ./private/var/db ! -path ./Library/Keychains ! -path './Library/Keychains/*' \
    ! -path ./private/var/db/dialog-answers \( -type d -printf '%p d %m %U:%G\n' -o -printf '%p %y %m %U:%G %s %T@ %l\n' \) | sort)
}

# contentOf BUNDLE: names, kinds and contents. A file of more than 64 MiB counts by its size alone.
contentOf() {
  [[ -d $1 && ! -L $1 ]] || { stat -c "%F %N" "$1" 2>&1 || true; return 0; }
  (cd "$1" && find . -printf '%P %y %l\n' | sort && find . -type f -size +65536k -printf '%P %s\n' | sort &&
    find . -type f ! -size +65536k -print0 | sort -z | xargs -0r sha256sum) | sha256sum | cut -c 1-64
}

# demandNothingLeft: no mount, no unpacked file, no process, no unfinished item and no note of one: folders of items being
# placed begin with ".~", a process's notes end with its id.
demandNothingLeft() {
  local left
  left=$(find "$mac/Volumes" "$run/Output" "$mac/private/var/run/sim-disks" -mindepth 1 2>/dev/null | grep -v '/lock$' | head -n 3) || true
  [[ -z $left ]] || violation all "left behind: $left"
  left=$(find "$mac/Applications" "$run" -maxdepth 2 \( -name '.~*' -o -name '.vorlu-*' -o -name 'placement-*' -o \
    -name 'images-*' -o -name 'prompt-*' \) | head -n 3)
  [[ -z $left ]] || violation all "unfinished: $left"
  left=$(inside /bin/ps -axo comm= | grep -v -e launchd -e 'ps$' | head -n 3) || true
  [[ -z $left ]] || violation all "still running: $left"
}

# demandSameMac LISTING: what `macListing` said before.
demandSameMac() {
  local changed
  changed=$(diff "$1" <(macListing) | head -n 5) || true
  [[ -z $changed ]] || violation all "written outside: $changed"
}
