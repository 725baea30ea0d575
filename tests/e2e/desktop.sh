#!/usr/bin/env bash
# The orb panel on a real X server: placement, click-through, dragging, docking, the hot key and
# a screen that shrinks under a docked orb.
# Usage: desktop.sh TIDEMARK [SCREENSHOT_DIR]
set -euo pipefail

app=${1:?usage: desktop.sh TIDEMARK [SCREENSHOT_DIR]}
shots=${2:-}
[ -x "$app" ] || { echo "not executable: $app" >&2; exit 2; }
for tool in Xvfb openbox xcompmgr trayer xdotool xwininfo xrandr xev import convert; do
  command -v "$tool" >/dev/null || { echo "missing $tool (scripts/setup installs it)" >&2; exit 2; }
done
[ -z "$shots" ] || mkdir -p "$shots"

source "$(dirname "$0")/lib.sh"

quiet_home 0
# A bus that does not exist: no autolaunched daemon outlives the test.
export DBUS_SESSION_BUS_ADDRESS="unix:path=$tmp/runtime/no-bus"

start_x 1280x800x24
xcompmgr >"$tmp/xcompmgr.log" 2>&1 &
pids+=($!)
# A system tray (XEmbed) at the top right, out of the way of the orb's checks.
trayer --edge top --align right --widthtype pixel --width 80 --height 24 >"$tmp/trayer.log" 2>&1 &
pids+=($!)

# The window below the panel: xev reports every button press it gets.
xev -geometry 1280x800+0+0 -name below -event button >"$tmp/below.log" 2>&1 &
pids+=($!)
wait_for 10 xdotool search --onlyvisible --name '^below$' >/dev/null ||
  die "the window below did not appear"

panel=
start_app() {
  "$app" >>"$tmp/app.log" 2>&1 &
  app_pid=$!
  find_panel() { panel=$(xdotool search --onlyvisible --name '^岚舟' 2>/dev/null | head -1) && [ -n "$panel" ]; }
  wait_for 10 find_panel || die "no visible window named 岚舟 within 10 s; app log: $(cat "$tmp/app.log")"
}

origin() {
  xwininfo -id "$panel" |
    awk '/Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { y = $NF } END { print x, y }'
}
origin_is() { [ "$(origin)" = "$1 $2" ]; }
map_state() { xwininfo -id "$panel" | awk '/Map State/ { print $NF }'; }
mapped_as() { [ "$(map_state)" = "$1" ]; }
app_gone() { ! running "$app_pid"; }
presses() { grep -c '^ButtonPress' "$tmp/below.log" || true; }

# The hover poll gives the orb its input shape back within 80 ms of the pointer arriving.
point_at() { xdotool mousemove "$1" "$2"; sleep 0.3; }

# Press, move in 25 steps, rest so the release starts no glide, release.
drag() {
  local x0=$1 y0=$2 x1=$3 y1=$4 i
  point_at "$x0" "$y0"
  xdotool mousedown 1
  sleep 0.1
  for ((i = 1; i <= 25; i++)); do
    xdotool mousemove $((x0 + (x1 - x0) * i / 25)) $((y0 + (y1 - y0) * i / 25))
    sleep 0.02
  done
  sleep 0.4
  xdotool mouseup 1
  sleep 0.3
}

shot() { [ -z "$shots" ] || import -window root "$shots/$1.png"; }
pixel() { convert "$tmp/screen.png" -format "%[pixel:p{$1,$2}]" info:; }

# 1. A first launch centres the panel on the screen.
start_app
read -r x y <<<"$(origin)"
size=$(xwininfo -id "$panel" | awk '/Width:/ { w = $NF } /Height:/ { h = $NF } END { print w "x" h }')
if [ "$x $y $size" = "410 170 460x460" ]; then
  ok "panel 460x460 at (410,170), centred on 1280x800"
else
  fail "panel $size at ($x,$y), expected 460x460 at (410,170)"
fi
shot 1-centred

# The tray holds the app's icon: a window of class tidemark embedded in trayer's panel.
tray_icon() {
  local tray
  tray=$(xwininfo -root -tree | awk '/"panel": \("panel" "trayer"\)/ { print $1; exit }')
  [ -n "$tray" ] && xwininfo -tree -id "$tray" | grep -q '("tidemark" "tidemark")'
}
if wait_for 5 tray_icon; then ok "the tray shows the app's icon"; else fail "no icon of the app in the tray"; fi

# 2. Only the orb takes clicks; the transparent rest of the panel passes them on.
point_at 430 190
xdotool click 1
if wait_for 3 grep -q 'root:(430,190)' "$tmp/below.log"; then
  ok "a click on the panel's transparent corner reached the window below"
else
  fail "a click at (430,190), inside the panel's transparent corner, did not reach the window below"
fi
before=$(presses)
point_at 640 400
xdotool click 1
sleep 0.6
if [ "$(presses)" = "$before" ]; then
  ok "a click on the orb's core stayed with the orb"
else
  fail "a click on the orb's core at (640,400) went through to the window below"
fi

# A double click on the orb opens the settings window on the circular detail; Alt+F4 closes it.
settings_window() { xdotool search --name '^设置 · 使用偏好$' | head -1; }
settings_shown() { [ -n "$(settings_window)" ]; }
settings_gone() { ! settings_shown; }
point_at 640 400
xdotool click --repeat 2 --delay 90 1
if wait_for 5 settings_shown; then
  sleep 0.8
  shot 2-detail
  ok "a double click on the orb opened the settings window"
  xdotool windowactivate --sync "$(settings_window)" key alt+F4
  wait_for 5 settings_gone || fail "Alt+F4 did not close the settings window"
else
  fail "a double click on the orb at (640,400) opened no settings window within 5 s"
fi

# 3. A drag moves the panel with the pointer; the place outlives a restart.
drag 640 400 840 500
read -r x y <<<"$(origin)"
if ((x >= 607 && x <= 613 && y >= 267 && y <= 273)); then
  ok "dragged by (+200,+100): panel at ($x,$y)"
else
  fail "dragged by (+200,+100): panel at ($x,$y), expected (610,270) ±3"
fi
# Quit through the ring menu's power button: its round face, above the label.
point_at 840 500
xdotool click 3
sleep 0.5
shot 3-ring-menu
read -r x y <<<"$(origin)"
point_at $((x + 292)) $((y + 297))
xdotool click 1
if wait_for 5 app_gone; then
  status=0
  wait "$app_pid" || status=$?
  app_pid=
  if [ "$status" = 0 ]; then ok "退出 in the ring menu quit the app"; else fail "the app quit with status $status"; fi
else
  fail "a click on the ring menu's 退出 button at ($((x + 292)),$((y + 297))) did not quit the app within 5 s"
  kill "$app_pid"
  wait "$app_pid" || true
  app_pid=
fi
start_app
if origin_is 610 270; then
  ok "after a restart the panel is back at (610,270)"
else
  fail "after a restart the panel is at ($(origin)), expected (610,270)"
fi

# 4. Released near the left edge, the orb docks as a half-disc centred on x = 0.
drag 840 500 5 500
if origin_is -230 270; then
  ok "docked left: panel at (-230,270), orb centre on x = 0"
else
  fail "released at x = 5: panel at ($(origin)), expected (-230,270)"
fi
import -window root "$tmp/screen.png"
[ -z "$shots" ] || cp "$tmp/screen.png" "$shots/4-docked-left.png"
background=$(pixel 1200 700)
if [ "$(pixel 20 500)" != "$background" ] && [ "$(pixel 150 500)" = "$background" ]; then
  ok "the visible half-disc is drawn at x = 20; x = 150 shows the window below"
else
  fail "pixels on row 500: x=20 $(pixel 20 500), x=150 $(pixel 150 500), background $background"
fi

# 5. Ctrl+Alt+Space hides the panel and brings it back where it was.
xdotool key ctrl+alt+space
if wait_for 3 mapped_as IsUnMapped; then
  ok "Ctrl+Alt+Space hid the panel"
else
  fail "Ctrl+Alt+Space: panel still $(map_state)"
fi
xdotool key ctrl+alt+space
if wait_for 3 mapped_as IsViewable && origin_is -230 270; then
  ok "Ctrl+Alt+Space again showed the panel at (-230,270)"
else
  fail "Ctrl+Alt+Space again: panel $(map_state) at ($(origin)), expected shown at (-230,270)"
fi

# One app per user: a second start shows the first one's hidden orb and exits 0.
xdotool key ctrl+alt+space
wait_for 3 mapped_as IsUnMapped || fail "Ctrl+Alt+Space did not hide the panel a second time"
second=0
timeout 10 "$app" >>"$tmp/second.log" 2>&1 || second=$?
if [ "$second" = 0 ] && wait_for 3 mapped_as IsViewable && running "$app_pid"; then
  ok "a second start exited 0 and the running app showed its orb"
else
  fail "a second start: status $second, panel $(map_state); $(cat "$tmp/second.log")"
fi

# 6. A screen that shrinks under a right-docked orb keeps it on the new right edge.
drag 20 500 1275 500
if origin_is 1050 270; then
  ok "docked right: panel at (1050,270)"
else
  fail "released at x = 1275: panel at ($(origin)), expected (1050,270)"
fi
xrandr --newmode 1024x768 63.50 1024 1072 1176 1328 768 771 775 798 -hsync +vsync
xrandr --addmode screen 1024x768
xrandr --output screen --mode 1024x768
if wait_for 5 origin_is 794 270; then
  ok "screen shrunk to 1024x768: panel at (794,270), orb centre on x = 1024"
else
  fail "screen shrunk to 1024x768: panel at ($(origin)), expected (794,270) with the centre on x = 1024"
fi
shot 6-docked-right-1024

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
