#!/usr/bin/env bash
# `tidemark --render-previews DIR` without a display: every image at its size and not blank, the
# promised last line, nothing written to the user's settings or data folders, and a folder that
# cannot be made told in words.
set -uo pipefail
app="$1"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home" "$work/config" "$work/data"
passed=0 failed=0
ok() { passed=$((passed + 1)); }
fail() { failed=$((failed + 1)); echo "FAIL: $*"; }

status=0
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM HOME="$work/home" \
  XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" "$app" --render-previews "$work/p" \
  >"$work/out" &
pid=$!
wait "$pid" || status=$?
out=$(cat "$work/out")
[[ "$out" == "Rendered previews: $work/p" && $status == 0 ]] && ok || fail "status $status, printed '$out'"

expected=()
for theme in dark light aurora amber rose ocean; do
  expected+=("orb-$theme 460 460" "detail-$theme 980 680" "detail-kline-$theme 980 680"
    "settings-$theme 960 740" "watchlist-$theme 940 650")
done
expected+=("onboarding 480 600" "alert 420 540" "orb-collapsed 460 460" "orb-radial 460 460"
  "orb-dock-left 460 460" "orb-dock-right 460 460" "orb-dock-top 460 460"
  "orb-dock-bottom 460 460" "alert-masked 420 540" "detail-masked 980 680"
  "detail-kline-masked 980 680")
for theme in dark light aurora amber rose ocean; do
  for section in appearance detail watchlist holdings alerts source privacy; do
    expected+=("settings-$section-$theme 960 740")
  done
done
for entry in "${expected[@]}"; do
  read -r name width height <<<"$entry"
  file="$work/p/$name.png"
  # Width, height, PNG, and how many colours: a blank or single-colour image has one.
  read -r w h format colours < <(identify -format '%w %h %m %k\n' "$file" 2>/dev/null) || true
  if [[ "${format:-}" != PNG || "${w:-}" != "$width" || "${h:-}" != "$height" ]]; then
    fail "$name.png is ${w:-?}×${h:-?} ${format:-missing}, not a ${width}×${height} PNG"
  elif ((colours < 200)); then
    fail "$name.png has only $colours colours"
  else
    ok
  fi
done
# Previews that must differ where they show different things: the masked twins where the
# figures stand (the alert editor's price line, the detail orb's price and change), a settings
# section's heading and first card, the ring menu's first button, the docked halves.
while read -r one other area; do
  convert "$work/p/$one.png" -crop "$area" +repage "$work/a.png"
  convert "$work/p/$other.png" -crop "$area" +repage "$work/b.png"
  changed=$(compare -metric AE "$work/a.png" "$work/b.png" null: 2>&1 || true)
  if ((${changed%%.*} > 500)); then ok; else fail "$other.png shows the same as $one.png in $area ($changed pixels differ)"; fi
done <<'PAIRS'
alert alert-masked 300x40+20+170
detail-dark detail-masked 240x90+140+290
detail-dark detail-kline-dark 220x180+530+130
detail-kline-dark detail-kline-masked 220x30+530+140
settings-appearance-dark settings-source-dark 700x200+180+20
orb-collapsed orb-radial 48x62+119+176
orb-dock-left orb-dock-right 460x460+0+0
orb-dock-top orb-dock-bottom 460x460+0+0
PAIRS
# The backdrop of each theme, as its palette gives it.
while read -r theme hex; do
  seen=$(convert "$work/p/orb-$theme.png" -format '%[hex:p{5,5}]' info: 2>/dev/null)
  [[ "$seen" == "$hex" ]] && ok || fail "orb-$theme.png backdrop $seen, expected $hex"
done <<'BACKDROPS'
dark 0B0D1C
light EEF0F8
aurora 081A1A
amber 20170D
rose 1E101C
ocean 0A1422
BACKDROPS
count=$(find "$work/p" -type f | wc -l)
((count == ${#expected[@]})) && ok || fail "$count files written, ${#expected[@]} expected"
# This run's throw-away watchlist file is gone too (other runs may have their own meanwhile).
leftover="$(find "$work/home" "$work/config" "$work/data" -type f; ls "/tmp/tidemark-preview-$pid-watchlist.json" 2>/dev/null)"
[[ -z "$leftover" ]] && ok || fail "left behind: $leftover"

# A folder that cannot be made is told at once, and nothing is drawn.
touch "$work/plain"
out=$(env -u DISPLAY -u WAYLAND_DISPLAY "$app" --render-previews "$work/plain/p" 2>&1)
status=$?
[[ $status == 1 && "$out" == "tidemark: cannot write the previews into $work/plain/p: Not a directory" ]] &&
  ok || fail "into a path below a plain file: status $status, printed '$out'"

echo "$passed passed, $failed failed"
