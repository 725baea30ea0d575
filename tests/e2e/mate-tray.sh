#!/usr/bin/env bash
# The tray item in MATE's own panel under Xvfb (mate-panel and its notification area, which is
# both the StatusNotifierItem watcher and host), on a private session bus: the item is drawn with
# no text beside it, and stays drawn while masked. Exits 77 (skipped) where mate-panel is missing.
# Usage: mate-tray.sh TIDEMARK [SCREENSHOT]   (runs itself again inside dbus-run-session)
set -uo pipefail
app=${1:?usage: mate-tray.sh TIDEMARK [SCREENSHOT]}
shot=${2:-}
command -v mate-panel >/dev/null || { echo "skipped: mate-panel is not installed"; exit 77; }
if [ -z "${TIDEMARK_MATE_INSIDE:-}" ]; then
  TIDEMARK_MATE_INSIDE=1 exec dbus-run-session -- bash "$0" "$@" 2> >(grep -v '^dbus-daemon' >&2)
fi
source "$(dirname "$0")/lib.sh"
quiet_home 0 # the icon alone: the case MATE once drew nothing for
export XDG_CURRENT_DESKTOP=MATE GSETTINGS_BACKEND=memory

start_x 1280x200x24
dbus-update-activation-environment DISPLAY XDG_CURRENT_DESKTOP GSETTINGS_BACKEND HOME \
  XDG_CONFIG_HOME XDG_DATA_HOME XDG_RUNTIME_DIR 2>/dev/null
mate-panel >"$tmp/panel.log" 2>&1 &
pids+=($!)
watcher() {
  dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
    org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher "string:$1"
}
host_up() { watcher IsStatusNotifierHostRegistered 2>/dev/null | grep -q 'boolean true'; }
wait_for 30 host_up || die "mate-panel's notification area did not come up: $(tail -c 400 "$tmp/panel.log")"

# The right half of the panel: the notification area, then the clock. Once two grabs a second
# apart agree, the panel has settled.
strip() { import -window root -crop 640x24+640+0 +repage "$tmp/$1.png"; }
differ() { compare -metric AE "$tmp/$1.png" "$tmp/$2.png" null: 2>&1; }
settled() { strip before && sleep 1 && strip again && [ "$(differ before again)" = 0 ]; }
wait_for 20 settled || die "the panel kept changing"

"$app" >"$tmp/app.log" 2>&1 &
app_pid=$!
item=""
registered() { tray_item "$app_pid"; }
# What the panel shows begins further left by an item's width: the notification area's handle
# moves aside for it. (The clock's text changes width by a pixel or two as the minutes turn.)
left_edge() { convert "$tmp/$1.png" -fuzz 10% -trim -format '%[fx:page.x]' info:; }
widened() { [ $(($(left_edge before) - $(left_edge "$1"))) -ge 18 ]; }
drawn() { strip now && widened now; }
if wait_for 20 registered && wait_for 10 drawn; then
  ok "MATE's panel draws the item, the icon alone"
else
  fail "MATE's panel: registered $(registered && echo yes || echo no), its left edge from $(left_edge before) to $(left_edge now)"
fi
has_label() {
  dbus-send --session --print-reply --dest="$item" /StatusNotifierItem \
    org.freedesktop.DBus.Properties.GetAll string:org.kde.StatusNotifierItem | grep -q XAyatanaLabel
}
if has_label; then fail "the item publishes a label on MATE"; else ok "no label published on MATE"; fi
[ -z "$shot" ] || import -window root "$shot"
cp "$tmp/now.png" "$tmp/shown.png"

"$app" --toggle-mask >>"$tmp/app.log" 2>&1
masked_icon() { strip masked && [ "$(differ shown masked)" -gt 0 ] && widened masked; }
if wait_for 10 masked_icon; then
  ok "masked, the panel still draws the item"
else
  fail "masked: pixels changed from the unmasked icon $(differ shown masked), the left edge from $(left_edge before) to $(left_edge masked)"
fi

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
