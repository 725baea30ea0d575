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
source "$(dirname "$0")/lib.sh"
quiet_home 2

start_x 800x200x24
status-notifier-watcher >/dev/null 2>&1 &
pids+=($!)
watcher_up() { dbus-send --session --print-reply --dest=org.freedesktop.DBus / \
  org.freedesktop.DBus.NameHasOwner string:org.kde.StatusNotifierWatcher | grep -q true; }
wait_for 10 watcher_up || { echo "status-notifier-watcher did not start"; exit 1; }
gtk-sni-tray-standalone --top >"$tmp/tray.log" 2>&1 &
pids+=($!)
tray_pid=$!
bar_shown() { [ -n "$(xdotool search --onlyvisible --pid "$tray_pid" 2>/dev/null)" ]; }
wait_for 10 bar_shown || { echo "gtk-sni-tray-standalone showed no bar"; exit 1; }
import -window root "$tmp/before.png"

# On a Saturday by the wall clock (libfaketime; the timers keep the real pace), read through the
# system's time zones: the tooltip tells that the market is closed.
# Preloaded into the app itself, so that $! is the app's own process.
libfaketime=$(ls /usr/lib/*/faketime/libfaketime.so.1 | head -1)
LD_PRELOAD=$libfaketime FAKETIME="@2026-11-28 04:00:00" TZ=UTC FAKETIME_DONT_FAKE_MONOTONIC=1 \
  ASAN_OPTIONS="${ASAN_OPTIONS:-}:verify_asan_link_order=0" "$app" >"$tmp/app.log" 2>&1 &
app_pid=$!
items() {
  dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
    org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
    string:RegisteredStatusNotifierItems | grep -c 'string "' || true
}
item=""
registered() { tray_item "$app_pid"; }
# Exactly one item, the app's own: no second one from the system tray icon.
if wait_for 30 registered && sleep 1 && [ "$(items)" = 1 ]; then
  ok "the app's own item registered with the watcher, and only it"
else
  fail "items registered: $(items), the app's among them: $(registered && echo "yes, $item" || echo no)"
fi
label=$(dbus-send --session --print-reply --dest="$item" /StatusNotifierItem \
  org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierItem string:XAyatanaLabel |
  sed -n 's/.*string "\(.*\)"/\1/p')
if [ "$label" = "600519  1,468.80  +1.16%" ]; then ok "the label reads '$label'"; else
  fail "the label reads '$label'"; fi
tip=$(dbus-send --session --print-reply --dest="$item" /StatusNotifierItem \
  org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierItem string:ToolTip |
  grep -c '贵州茅台  CNY1,468.80 · 休市"' || true)
if [ "$tip" = 1 ]; then ok "the tooltip says the market is closed on Saturday"; else
  fail "the tooltip: $(dbus-send --session --print-reply --dest="$item" /StatusNotifierItem \
    org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierItem string:ToolTip |
    tail -3)"; fi
# The host draws the icon at the top left: its pixels there change from the bare bar.
drawn() {
  import -window root "$tmp/after.png"
  changed=$(compare -metric AE -extract 40x30+0+0 "$tmp/before.png" "$tmp/after.png" null: 2>&1)
  [ "${changed%% *}" -gt 100 ] 2>/dev/null
}
if wait_for 30 drawn; then ok "the host drew the icon ($changed pixels changed)"; else
  fail "the tray's corner did not change ($changed pixels)"; fi
[ -z "$shot" ] || cp "$tmp/after.png" "$shot"

echo "$passed passed, $failed failed"
