#!/usr/bin/env bash
# Installs into a temporary prefix and runs the installed program; builds the Debian package and
# checks its contents, its metadata, lintian, the desktop entry and the AppStream file.
# Usage: install.sh BUILD_DIR SOURCE_DIR
set -uo pipefail
build="$1" source="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
passed=0 failed=0
check() {  # check DESCRIPTION COMMAND...
  local what=$1
  shift
  if "$@" >"$work/out" 2>&1; then passed=$((passed + 1)); else
    failed=$((failed + 1)); echo "FAIL: $what"; tail -5 "$work/out"; fi
}
export HOME="$work/home" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data"
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM

cmake --install "$build" --prefix "$work/prefix" >/dev/null
app="$work/prefix/bin/tidemark"
check "the installed --self-test passes" bash -c "'$app' --self-test | grep -qx 'All model and native checks passed'"
# The static source reads the snapshot from the installed resources: a price changed there shows.
sed -i 's/1468.8/1357.9/' "$work/prefix/share/tidemark/tidemark-quotes.json"
check "the installed --quotes reads the installed snapshot" \
  bash -c "'$app' --quotes --source static --symbols 600519 | grep -q '1,357.90'"
# The network module is loaded from the installed tree: a live source that cannot reach its
# server says so, not that the module is missing.
check "the installed program loads its network module" bash -c "
  '$app' --quotes --source tencent --symbols 600519 > '$work/live' 2>&1
  grep -q '行情源：腾讯行情' '$work/live' && ! grep -q '网络模块' '$work/live'"
for f in lib/tidemark/modules/tidemark-network.so share/tidemark/bridge/stock-sdk-bridge.mjs share/tidemark/bridge/node_modules/stock-sdk/package.json \
  share/applications/org.tidemark.Tidemark.desktop share/metainfo/org.tidemark.Tidemark.metainfo.xml \
  share/icons/hicolor/scalable/apps/org.tidemark.Tidemark.svg share/icons/hicolor/64x64/apps/org.tidemark.Tidemark.png \
  share/tidemark/icons/128.png share/doc/tidemark/copyright; do
  check "installed $f" test -s "$work/prefix/$f"
done
check "desktop-file-validate" desktop-file-validate "$source/packaging/org.tidemark.Tidemark.desktop"
check "appstreamcli validate" appstreamcli validate --no-net "$source/packaging/org.tidemark.Tidemark.metainfo.xml"

cpack --config "$build/CPackConfig.cmake" -B "$work/package" >/dev/null 2>&1
deb=$(ls "$work"/package/tidemark_*_amd64.deb 2>/dev/null)
check "a package was built" test -s "$deb"
check "the package holds the program, its resources and metadata" bash -c "
  dpkg-deb -c '$deb' | awk '{print \$NF}' > '$work/files'
  for f in ./usr/bin/tidemark ./usr/lib/tidemark/modules/tidemark-network.so ./usr/share/tidemark/tidemark-quotes.json \
    ./usr/share/tidemark/bridge/node_modules/stock-sdk/package.json \
    ./usr/share/applications/org.tidemark.Tidemark.desktop ./usr/share/doc/tidemark/copyright \
    ./usr/share/metainfo/org.tidemark.Tidemark.metainfo.xml ./usr/share/man/man1/tidemark.1.gz; do
    grep -qx \"\$f\" '$work/files' || { echo missing \$f; exit 1; }
  done"
check "its dependencies: Qt and the platform plugin required, Node.js recommended" bash -c "
  dpkg-deb -f '$deb' Depends | grep -q 'libqt6widgets6' &&
  dpkg-deb -f '$deb' Depends | grep -q 'qt6-qpa-plugins' &&
  dpkg-deb -f '$deb' Recommends | grep -qx 'nodejs (>= 18)' &&
  ! dpkg-deb -f '$deb' Depends | grep -q nodejs"
check "lintian reports no errors" lintian --fail-on error "$deb"

echo "$passed passed, $failed failed"
