#!/usr/bin/env bash
# The orb on two screens with the real binary, on Qt's off-screen platform (Xvfb cannot offer
# two screens to Qt): an orb docked on the border two screens share, or free on the second
# screen, is where it was after a restart.
# Usage: screens.sh TIDEMARK
set -euo pipefail
app=${1:?usage: screens.sh TIDEMARK}
source "$(dirname "$0")/lib.sh"

quiet_home 0
export DBUS_SESSION_BUS_ADDRESS="unix:path=$tmp/runtime/no-bus"
unset DISPLAY
cat >"$tmp/screens.json" <<'JSON'
{"synchronousWindowSystemEvents": false, "windowFrameMargins": false, "screens": [
 {"name": "L", "x": 0, "y": 0, "width": 1920, "height": 1080, "logicalDpi": 96,
  "logicalBaseDpi": 96, "dpr": 1},
 {"name": "R", "x": 1920, "y": 0, "width": 1920, "height": 1080, "logicalDpi": 96,
  "logicalBaseDpi": 96, "dpr": 1}]}
JSON
export QT_QPA_PLATFORM="offscreen:configfile=$tmp/screens.json"
conf="$XDG_CONFIG_HOME/Tidemark/Tidemark.conf"

# The stored position the app leaves behind, as "x y edge".
stored() {
  sed -n 's/^tidemark.orb.position.v2=.*"x\\":\([-0-9.]*\),\\"y\\":\([-0-9.]*\),\\"edge\\":\\"\([a-z]*\)\\".*/\1 \2 \3/p' "$conf" |
    awk '{ printf "%g %g%s\n", $1, $2, ($3 == "" ? "" : " " $3) }'
}

# Starts the app with the position given, waits until it has launched (a second start is then
# answered by it), ends it with SIGTERM and prints the position it kept.
run_with() {
  local edge=$3
  [ "$edge" != - ] || edge=
  grep -v '^tidemark.orb.position.v2=' "$conf" >"$conf.new" || true
  printf 'tidemark.orb.position.v2="@ByteArray({\\"x\\":%s,\\"y\\":%s,\\"edge\\":\\"%s\\"})"\n' \
    "$1" "$2" "$edge" >>"$conf.new"
  mv "$conf.new" "$conf"
  "$app" >>"$tmp/app.log" 2>&1 &
  app_pid=$!
  # The socket first: a second start before it would become the first instance itself.
  wait_for 10 test -S "$XDG_RUNTIME_DIR/tidemark.socket" ||
    die "the app did not start: $(cat "$tmp/app.log")"
  wait_for 10 "$app" >>"$tmp/second.log" 2>&1 || die "the app did not answer a second start"
  kill -TERM "$app_pid"
  wait "$app_pid" || true
  app_pid=
  stored
}

# Stored centre and edge, and what must be kept: docked on either side of the shared border, or
# free on the right screen.
while read -r x y edge expected; do
  kept=$(run_with "$x" "$y" "$edge")
  if [ "$kept" = "$expected" ]; then
    ok "stored ($x,$y) ${edge:-free}: kept $kept"
  else
    fail "stored ($x,$y) ${edge:-free}: kept '$kept', expected '$expected'"
  fi
done <<'ROWS'
1920 400 left 1920 400 left
1920 400 right 1920 400 right
3840 700 right 3840 700 right
2500 300 - 2500 300
ROWS

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
