#!/usr/bin/env bash
# The app's own tray item in a real StatusNotifierItem host under Xvfb: status-notifier-watcher
# and gtk-sni-tray-standalone on a private session bus. The item registers and its icon is drawn.
# Usage: sni-tray.sh TIDEMARK [SCREENSHOT]   (runs itself again inside dbus-run-session)
set -uo pipefail
app=${1:?usage: sni-tray.sh TIDEMARK [SCREENSHOT]}
shot=${2:-}
if [ -z "${TIDEMARK_SNI_INSIDE:-}" ]; then
  TIDEMARK_SNI_INSIDE=1 exec dbus-run-session -- bash "$0" "$@" 2> >(grep -v '^dbus-daemon' >&2)
fi
tmp=$(mktemp -d)
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null; done
  wait 2>/dev/null
  rm -rf "$tmp"
}
trap cleanup EXIT
passed=0 failed=0
ok() { passed=$((passed + 1)); echo "ok   - $1"; }
fail() { failed=$((failed + 1)); echo "FAIL - $1"; }
wait_for() {
  local seconds=$1
  shift
  for _ in $(seq $((seconds * 10))); do "$@" && return 0; sleep 0.1; done
  return 1
}
export HOME="$tmp/home" XDG_CONFIG_HOME="$tmp/config" XDG_DATA_HOME="$tmp/data"
export XDG_RUNTIME_DIR="$tmp/runtime" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" "$XDG_CONFIG_HOME/Tidemark"
chmod 700 "$XDG_RUNTIME_DIR"
cat >"$XDG_CONFIG_HOME/Tidemark/Tidemark.conf" <<'CONF'
[General]
tidemark.native.preferences.v2="@ByteArray({\"activeID\":\"600519\",\"theme\":\"dark\",\"reduceMotion\":true,\"refreshInterval\":0,\"sourceMode\":\"mock\",\"masked\":false,\"orbSize\":96,\"autoRotate\":false,\"menuDensity\":2,\"phase\":\"live\",\"latencyMS\":86,\"updatedAt\":0,\"onboardingSeen\":true,\"alertAbove\":true,\"alertTriggered\":false})"
CONF

Xvfb -displayfd 3 -screen 0 800x200x24 -nolisten tcp 3>"$tmp/display" 2>/dev/null &
pids+=($!)
wait_for 10 test -s "$tmp/display" || { echo "Xvfb did not start"; exit 1; }
export DISPLAY=":$(cat "$tmp/display")"
openbox >/dev/null 2>&1 &
pids+=($!)
status-notifier-watcher >/dev/null 2>&1 &
pids+=($!)
watcher_up() { dbus-send --session --print-reply --dest=org.freedesktop.DBus / \
  org.freedesktop.DBus.NameHasOwner string:org.kde.StatusNotifierWatcher | grep -q true; }
wait_for 10 watcher_up || { echo "status-notifier-watcher did not start"; exit 1; }
gtk-sni-tray-standalone --top >"$tmp/tray.log" 2>&1 &
pids+=($!)
sleep 2
import -window root "$tmp/before.png"

"$app" >"$tmp/app.log" 2>&1 &
pids+=($!)
app_pid=$!
items() {
  dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
    org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
    string:RegisteredStatusNotifierItems | grep -c 'string "' || true
}
item="org.kde.StatusNotifierItem-$app_pid-1"
registered() {
  dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
    org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
    string:RegisteredStatusNotifierItems | grep -q "$item"
}
# Exactly one item, the app's own: no second one from the system tray icon.
if wait_for 10 registered && sleep 1 && [ "$(items)" = 1 ]; then
  ok "the app's own item registered with the watcher, and only it"
else
  fail "items registered: $(items), $item among them: $(registered && echo yes || echo no)"
fi
label=$(dbus-send --session --print-reply --dest="$item" /StatusNotifierItem \
  org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierItem string:XAyatanaLabel |
  sed -n 's/.*string "\(.*\)"/\1/p')
if [ "$label" = "600519  1,468.80  +1.16%" ]; then ok "the label reads '$label'"; else
  fail "the label reads '$label'"; fi
# The host draws the icon at the top left: its pixels there change from the bare bar.
drawn() {
  import -window root "$tmp/after.png"
  changed=$(compare -metric AE -extract 40x30+0+0 "$tmp/before.png" "$tmp/after.png" null: 2>&1)
  [ "${changed%% *}" -gt 100 ] 2>/dev/null
}
if wait_for 10 drawn; then ok "the host drew the icon ($changed pixels changed)"; else
  fail "the tray's corner did not change ($changed pixels)"; fi
[ -z "$shot" ] || cp "$tmp/after.png" "$shot"

echo "$passed passed, $failed failed"
