# Shared by the end-to-end scripts: a scratch folder, background processes stopped on exit (the
# app first, the X server last), counted checks, polling, and an X server with a window manager.

tmp=$(mktemp -d)
pids=()
app_pid=
# A child that has exited stays a zombie until waited for; kill -0 would still find it.
running() { local state; state=$(ps -o stat= -p "$1" 2>/dev/null) && [[ $state != Z* ]]; }
cleanup() {
  local status=$? pid left i
  # The app first and the X server last; a sanitized app may take a while to write its report.
  for pid in $app_pid $(printf '%s\n' "${pids[@]}" | tac); do kill "$pid" 2>/dev/null || true; done
  for ((i = 0; i < 100; i++)); do
    left=
    for pid in $app_pid "${pids[@]}"; do running "$pid" && left=1; done
    [ -n "$left" ] || break
    sleep 0.1
  done
  for pid in $app_pid "${pids[@]}"; do kill -KILL "$pid" 2>/dev/null || true; done
  # A failed run keeps what the app said, sanitizer reports included, in the test's output.
  if { [ "$status" != 0 ] || [ "${failed:-0}" != 0 ]; } && [ -s "$tmp/app.log" ]; then
    echo "--- the app's log (last 4000 bytes) ---"
    tail -c 4000 "$tmp/app.log"
  fi
  rm -rf "$tmp"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

passed=0 failed=0
ok() { passed=$((passed + 1)); echo "ok   - $*"; }
fail() { failed=$((failed + 1)); echo "FAIL - $*"; }
die() { echo "FAIL - $*"; echo "$passed passed, $((failed + 1)) failed (stopped early)"; exit 1; }

# Runs "$@" every 0.1 s until it succeeds or $1 seconds have passed.
wait_for() {
  local tries=$(($1 * 10))
  shift
  until "$@"; do
    tries=$((tries - 1))
    [ "$tries" -gt 0 ] || return 1
    sleep 0.1
  done
}

# Sets `item` to the bus name the tray watcher lists for process $1; fails while it lists none.
tray_item() {
  local name
  for name in $(dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher \
    /StatusNotifierWatcher org.freedesktop.DBus.Properties.Get \
    string:org.kde.StatusNotifierWatcher string:RegisteredStatusNotifierItems 2>/dev/null |
    sed -n 's/^ *string "\([^"/]*\).*/\1/p'); do
    if dbus-send --session --print-reply --dest=org.freedesktop.DBus / \
      org.freedesktop.DBus.GetConnectionUnixProcessID "string:$name" 2>/dev/null |
      grep -q "uint32 $1\$"; then
      item=$name
      return 0
    fi
  done
  return 1
}

# Xvfb with the given screen ("1280x800x24") and openbox; exports DISPLAY.
start_x() {
  Xvfb -displayfd 3 -screen 0 "$1" -nolisten tcp 3>"$tmp/display" 2>"$tmp/xvfb.log" &
  pids+=($!)
  wait_for 10 test -s "$tmp/display" || die "Xvfb did not start: $(cat "$tmp/xvfb.log")"
  DISPLAY=":$(cat "$tmp/display")"
  export DISPLAY
  openbox >"$tmp/openbox.log" 2>&1 &
  pids+=($!)
  # Clients started before the window manager runs race it for their first map: wait for it.
  wm_ready() { xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; }
  wait_for 20 wm_ready || die "openbox did not start: $(tail -c 400 "$tmp/openbox.log")"
}

# A home, settings, data and private runtime folder of the test's own, and stored preferences
# that hold the orb still: guide seen, no motion, no refreshes; the tray title at density $1.
quiet_home() {
  mkdir -p "$tmp/home" "$tmp/config/Tidemark" "$tmp/data" "$tmp/runtime"
  chmod 700 "$tmp/runtime"
  export HOME="$tmp/home" XDG_CONFIG_HOME="$tmp/config" XDG_DATA_HOME="$tmp/data"
  export XDG_RUNTIME_DIR="$tmp/runtime" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb
  unset WAYLAND_DISPLAY QT_SCALE_FACTOR QT_SCREEN_SCALE_FACTORS QT_AUTO_SCREEN_SCALE_FACTOR \
    QT_ENABLE_HIGHDPI_SCALING
  printf '[General]\ntidemark.native.preferences.v2="@ByteArray(%s)"\n' \
    "{\\\"activeID\\\":\\\"600519\\\",\\\"theme\\\":\\\"dark\\\",\\\"reduceMotion\\\":true,\\\"refreshInterval\\\":0,\\\"sourceMode\\\":\\\"mock\\\",\\\"masked\\\":false,\\\"orbSize\\\":96,\\\"autoRotate\\\":false,\\\"menuDensity\\\":$1,\\\"phase\\\":\\\"live\\\",\\\"latencyMS\\\":86,\\\"updatedAt\\\":0,\\\"onboardingSeen\\\":true,\\\"alertAbove\\\":true,\\\"alertTriggered\\\":false}" \
    >"$XDG_CONFIG_HOME/Tidemark/Tidemark.conf"
}

# The orb's window, $panel: whether it is mapped, and whether it is nobody's dialog and on every
# desktop (KWin keeps a dialog of the application's hidden group window on one desktop).
map_state() { xwininfo -id "$panel" | awk '/Map State/ { print $NF }'; }
mapped_as() { [ "$(map_state)" = "$1" ]; }
on_every_desktop() {
  [ "$(xprop -id "$panel" _NET_WM_DESKTOP)" = "_NET_WM_DESKTOP(CARDINAL) = 4294967295" ] &&
    xprop -id "$panel" WM_TRANSIENT_FOR | grep -q 'not found'
}
