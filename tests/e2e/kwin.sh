#!/usr/bin/env bash
# The orb on KDE Plasma's compositor: a headless kwin_wayland with its X server and two virtual
# desktops, the app on X11 through it as it chooses itself. Checked: the window is the orb's
# drawing alone (KWin ignores input shapes); hidden and shown again it is above, out of the task
# bar, nobody's dialog and on every desktop. (Whether KWin then shows it on the second desktop
# is seen only in its pictures: it keeps the X windows of other desktops mapped.)
# Exits 77 (skipped) where kwin_wayland is missing.
# Usage: kwin.sh TIDEMARK   (runs itself inside its own session bus)
set -uo pipefail
app=${1:?usage: kwin.sh TIDEMARK}
command -v kwin_wayland >/dev/null || { echo "skipped: kwin_wayland is not installed"; exit 77; }
if [ -z "${TIDEMARK_KWIN_INSIDE:-}" ]; then
  TIDEMARK_KWIN_INSIDE=1 exec dbus-run-session -- bash "$0" "$@" 2> >(grep -v '^dbus-daemon' >&2)
fi
source "$(dirname "$0")/lib.sh"
quiet_home 0
unset QT_QPA_PLATFORM DISPLAY XAUTHORITY
export XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=KDE KWIN_WAYLAND_NO_PERMISSION_CHECKS=1
export QT_QUICK_BACKEND=software LIBGL_ALWAYS_SOFTWARE=1

# The installed binary carries a file capability, which root in a container cannot be granted:
# a copy runs without it. The session program tells the test where KWin's displays are.
cp "$(command -v kwin_wayland)" "$tmp/kwin_wayland"
printf '#!/bin/sh\necho "$DISPLAY $WAYLAND_DISPLAY" >%q/displays\nexec sleep 600\n' "$tmp" >"$tmp/session"
chmod +x "$tmp/session"
"$tmp/kwin_wayland" --virtual --xwayland --width 1280 --height 800 --socket "tm-kwin-$$" \
  --exit-with-session "$tmp/session" >"$tmp/kwin.log" 2>&1 &
pids+=($!)
wait_for 30 test -s "$tmp/displays" || die "kwin_wayland did not start: $(tail -c 600 "$tmp/kwin.log")"
read -r DISPLAY WAYLAND_DISPLAY <"$tmp/displays"
export DISPLAY WAYLAND_DISPLAY
add_desktop() {
  dbus-send --session --print-reply --dest=org.kde.KWin /VirtualDesktopManager \
    org.kde.KWin.VirtualDesktopManager.createDesktop uint32:1 string:two >"$tmp/desktop.log" 2>&1
}
two_desktops() { xprop -root _NET_NUMBER_OF_DESKTOPS | grep -q '= 2'; }
wait_for 10 add_desktop && wait_for 10 two_desktops ||
  die "no second desktop: $(xprop -root _NET_NUMBER_OF_DESKTOPS); $(cat "$tmp/desktop.log")"

"$app" >"$tmp/app.log" 2>&1 &
app_pid=$!
panel=
find_panel() { panel=$(xwininfo -root -tree | awk '/"岚舟/ { print $1; exit }') && [ -n "$panel" ]; }
wait_for 10 find_panel || die "no orb window within 10 s; app log: $(cat "$tmp/app.log")"
size() { xwininfo -id "$panel" | awk '/Width:/ { w = $NF } /Height:/ { h = $NF } END { print w "x" h }'; }
size_is() { [ "$(size)" = "$1" ]; }
if wait_for 10 size_is 125x126; then
  ok "the orb's window is its drawing alone, 125x126"
else
  fail "the orb's window is $(size), expected 125x126"
fi

"$app" --toggle-orb >/dev/null 2>&1
wait_for 10 mapped_as IsUnMapped || fail "tidemark --toggle-orb did not hide the orb: $(map_state)"
"$app" --toggle-orb >/dev/null 2>&1
wait_for 10 mapped_as IsViewable || fail "tidemark --toggle-orb again did not show the orb: $(map_state)"
states=$(xprop -id "$panel" _NET_WM_STATE)
if wait_for 5 on_every_desktop && [[ $states == *ABOVE* && $states == *SKIP_TASKBAR* && $states == *SKIP_PAGER* ]]; then
  ok "shown again, the orb is above, off the task bar and pager, nobody's dialog and on every desktop"
else
  fail "shown again: $states; $(xprop -id "$panel" _NET_WM_DESKTOP WM_TRANSIENT_FOR | tr '\n' ' ')"
fi
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
