#!/usr/bin/env bash
# The orb in a Wayland session: a headless mutter with its X server, the app on X11 through it
# as it chooses itself, and foot as a native Wayland window under the orb, logging the pointer
# events it gets. Pointer and keys go through mutter's RemoteDesktop API. Checked: clicks beside
# the orb reach foot, on it they do not, docked too; the ring menu closes on a click into foot;
# --toggle-mask masks while foot has the focus; a click on the orb gives it the keyboard; a click
# on the empty canvas beside the spread satellites folds them; hidden and shown again, the orb
# keeps the window states mutter drops from a hidden window.
# Run inside its own session bus: dbus-run-session -- wayland.sh TIDEMARK [SCREENSHOT_DIR]
set -euo pipefail

app=${1:?usage: wayland.sh TIDEMARK [SCREENSHOT_DIR]}
shots=${2:-}
[ -x "$app" ] || { echo "not executable: $app" >&2; exit 2; }
for tool in mutter foot xwininfo import convert /usr/bin/python3; do
  command -v "$tool" >/dev/null || { echo "missing $tool (scripts/setup installs it)" >&2; exit 2; }
done
[ -z "$shots" ] || mkdir -p "$shots"

source "$(dirname "$0")/lib.sh"
quiet_home 0
unset QT_QPA_PLATFORM DISPLAY XAUTHORITY
export XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=GNOME

mutter --headless --wayland --virtual-monitor 1280x800 \
  >"$tmp/mutter.log" 2>&1 &
pids+=($!)
x_display() { sed -n 's/.*Using public X11 display \(:[0-9]*\).*/\1/p' "$tmp/mutter.log"; }
wayland_socket() { sed -n "s/.*Using Wayland display name '\([^']*\)'.*/\1/p" "$tmp/mutter.log"; }
ready() { [ -n "$(x_display)" ] && [ -n "$(wayland_socket)" ] && ls "$XDG_RUNTIME_DIR"/.mutter-Xwaylandauth.* >/dev/null 2>&1; }
wait_for 20 ready || die "mutter did not start: $(tail -c 600 "$tmp/mutter.log")"
export DISPLAY WAYLAND_DISPLAY XAUTHORITY
DISPLAY=$(x_display) WAYLAND_DISPLAY=$(wayland_socket)
XAUTHORITY=$(ls "$XDG_RUNTIME_DIR"/.mutter-Xwaylandauth.* | head -1)

# foot fills most of the screen under the orb; every pointer event it gets is in its log.
WAYLAND_DEBUG=client foot --window-size-pixels=1240x760 sh -c 'sleep 600' >"$tmp/foot.log" 2>&1 &
pids+=($!)
foot_mapped() { grep -q 'xdg_toplevel@[0-9]*.configure' "$tmp/foot.log"; }
wait_for 10 foot_mapped || die "foot did not map: $(tail -c 400 "$tmp/foot.log")"
foot_presses() { grep -c 'wl_pointer@[0-9]*\.button(.*, 1)' "$tmp/foot.log" || true; }

coproc INPUT { /usr/bin/python3 "$(dirname "$0")/mutter-input.py" 2>"$tmp/input.log"; }
pids+=($INPUT_PID)
read -r -t 10 answer <&"${INPUT[0]}" || die "no RemoteDesktop session: $(cat "$tmp/input.log")"
input() { echo "$*" >&"${INPUT[1]}"; read -r -t 5 answer <&"${INPUT[0]}"; }

"$app" >"$tmp/app.log" 2>&1 &
app_pid=$!
panel=
find_panel() { panel=$(xwininfo -root -tree | awk '/"岚舟/ { print $1; exit }') && [ -n "$panel" ]; }
wait_for 10 find_panel || die "no orb window within 10 s; app log: $(cat "$tmp/app.log")"
geometry() {
  xwininfo -id "$panel" | awk '/Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { y = $NF }
    /Width:/ { w = $NF } /Height:/ { h = $NF } END { print x, y, w "x" h }'
}
geometry_is() { [ "$(geometry)" = "$1" ]; }
collapsed="578 329 125x126"
wait_for 10 geometry_is "$collapsed" || fail "the orb's window: $(geometry), expected $collapsed"
# Printed once the app has started, which a sanitized build on a busy machine takes a while for.
if wait_for 20 grep -q "no global keys in a Wayland session" "$tmp/app.log"; then
  ok "the start-up line says the keys are not bound yet"
else
  fail "the start-up line: $(cat "$tmp/app.log")"
fi

# The price's red pixels in the window's own image: the orb centred in it, its price 70 × 22
# from (27, 56).
reds() {
  import -window "$panel" "$tmp/orb.png" 2>/dev/null
  convert "$tmp/orb.png" -crop "70x22+$1+$2" +repage -fuzz 20% -fill '#00FF01' -opaque '#FF453A' \
    -fuzz 0 -fill black +opaque '#00FF01' -fill white -opaque '#00FF01' \
    -format '%[fx:round(mean*w*h)]' info:
}
price_shown() { [ "$(reds 27 56)" -gt 40 ]; }
price_masked() { [ "$(reds 27 56)" = 0 ]; }
shot() { [ -z "$shots" ] || import -window "$panel" "$shots/$1.png"; }
wait_for 10 price_shown || fail "no price on the orb"
shot wayland-orb

click() { input move "$1" "$2" && input click "${3:-1}"; }
# Presses foot got for a click at ($1,$2): 1 when it went through, 0 when the orb took it.
through() {
  local before after
  before=$(foot_presses)
  click "$1" "$2"
  wait_for 2 test "$(foot_presses)" -gt "$before" || true
  after=$(foot_presses)
  echo $((after - before))
}

# Until foot has taken a first click and a first key (the very first ones after the session
# starts can be lost), clicks go to a corner far from the orb and Shift to foot.
warm() { click 60 700; wait_for 1 test "$(foot_presses)" -gt 0; }
wait_for 10 warm || die "foot takes no clicks: $(grep -c wl_pointer "$tmp/foot.log") pointer events"
foot_keys() { grep -c 'wl_keyboard@[0-9]*\.key(' "$tmp/foot.log" || true; }
warm_keys() { input key shift; wait_for 1 test "$(foot_keys)" -gt 0; }
wait_for 10 warm_keys || die "foot hears no keys: $(grep -c wl_keyboard "$tmp/foot.log") keyboard events"

# 1. Beside the orb, in its 460-point canvas (410,170)-(870,630) but outside its window: the
# panel's square no longer covers foot there.
for at in "440 200" "800 560"; do
  if [ "$(through $at)" = 1 ]; then ok "a click at ($at) beside the orb reached foot"; else fail "a click at ($at) beside the orb did not reach foot"; fi
done
# 2. On the orb: foot gets nothing, the orb spreads its satellites and has the keyboard: Esc
# folds them, M masks.
if [ "$(through 640 400)" = 0 ] && wait_for 5 geometry_is "410 170 460x460"; then
  ok "a click on the orb stayed with it and spread the satellites"
else
  fail "a click on the orb: foot presses $(foot_presses), window $(geometry)"
fi
input key esc
wait_for 10 geometry_is "$collapsed" ||
  fail "Esc after a click on the orb left the window $(geometry); $(xprop -root _NET_ACTIVE_WINDOW) (the orb: $panel)"
input key m
if wait_for 5 price_masked; then ok "after a click on the orb, M masked the price"; else fail "M after a click on the orb: $(reds 27 56) red pixels"; fi
input key m
wait_for 5 price_shown || fail "M again did not show the price"

# The canvas beside the spread satellites takes clicks here (mutter ignores the input shape): a
# click there folds them, as one on another window would.
click 640 400
wait_for 5 geometry_is "410 170 460x460" || fail "a click on the orb did not spread the satellites: $(geometry)"
if [ "$(through 440 200)" = 0 ] && wait_for 10 geometry_is "$collapsed"; then
  ok "a click on the empty canvas beside the satellites folded them"
else
  fail "a click on the empty canvas beside the satellites: foot presses $(foot_presses), window $(geometry)"
fi

# 3. The ring menu closes on a click into foot, which gets the click.
click 640 400 3
wait_for 5 geometry_is "410 170 460x460" || fail "a right click on the orb opened no ring: $(geometry)"
shot wayland-ring
if [ "$(through 200 650)" = 1 ] && wait_for 10 geometry_is "$collapsed"; then
  ok "a click into foot closed the ring menu and reached foot"
else
  fail "a click into foot with the ring open: window $(geometry)"
fi

# 4. foot has the focus: --toggle-mask masks through the running app, and again unmasks.
status=0
"$app" --toggle-mask >"$tmp/toggle.log" 2>&1 || status=$?
if [ "$status" = 0 ] && wait_for 5 price_masked; then
  ok "tidemark --toggle-mask masked the price while foot had the focus"
else
  fail "tidemark --toggle-mask: status $status, $(reds 27 56) red pixels; $(cat "$tmp/toggle.log")"
fi
"$app" --toggle-mask >/dev/null 2>&1 || true
wait_for 5 price_shown || fail "--toggle-mask again did not show the price"

# 5. Docked on the left edge: only the visible half is a window; beside it foot gets the click.
input move 640 400
input press 1
for _ in $(seq 1 16); do input step -40 0; done
# On a busy machine the app may still be catching up with the pointer: the release comes once
# the orb has followed it all the way (mutter holds the window at x 0), and the dock is waited
# for, not timed.
# A motion the loaded app missed is not sent again by anyone but a hand that keeps moving: every
# two seconds the pointer wiggles a pixel at the edge, as a user's would.
polls=0
near_edge() {
  local x
  read -r x _ <<<"$(geometry)"
  [ "$x" -le 0 ] && return 0
  if ((++polls % 20 == 0)); then input step 1 0; input step -1 0; fi
  return 1
}
wait_for 20 near_edge || fail "the orb did not follow the drag to the left edge: $(geometry)"
input release 1
if wait_for 20 geometry_is "0 329 63x126"; then
  ok "dragged to the left edge, the orb docked: its window is the visible half"
else
  fail "after the drag to the left edge the window is $(geometry)"
fi
shot wayland-docked
beside=$(through 150 400)
# The first click after a drag can be lost on a busy machine; while the orb still shows docked it
# was not the orb's, and the click is tried once more.
[ "$beside" = 1 ] || ! geometry_is "0 329 63x126" || beside=$(through 150 400)
above=$(through 60 200) on=$(through 20 400)
if [ "$beside $above $on" = "1 1 0" ]; then
  ok "docked: clicks in the visible half of the canvas beside the half-disc reached foot, one on it did not"
else
  fail "docked: clicks beside, above and on the half-disc reached foot $beside, $above, $on times; window $(geometry)"
fi

# Hidden and shown again, the orb is still above, on every workspace and off the task bar,
# although mutter dropped those states while it was hidden.
"$app" --toggle-orb >/dev/null 2>&1 || true
wait_for 10 mapped_as IsUnMapped || fail "tidemark --toggle-orb did not hide the orb: $(map_state)"
"$app" --toggle-orb >/dev/null 2>&1 || true
wait_for 10 mapped_as IsViewable || fail "tidemark --toggle-orb again did not show the orb: $(map_state)"
states=$(xprop -id "$panel" _NET_WM_STATE)
if [[ $states == *STICKY* && $states == *ABOVE* && $states == *SKIP_TASKBAR* && $states == *SKIP_PAGER* ]]; then
  ok "hidden and shown again, the orb keeps above, sticky and off the task bar and pager"
else
  fail "hidden and shown again, the orb's states: $states"
fi
# No dialog of the application's hidden group window, and on every workspace.
if wait_for 5 on_every_desktop; then
  ok "shown again, the orb is no one's dialog and on every workspace"
else
  fail "shown again: $(xprop -id "$panel" _NET_WM_DESKTOP WM_TRANSIENT_FOR | tr '\n' ' ')"
fi

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
