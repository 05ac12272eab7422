#!/usr/bin/env bash
# Makes the README's screenshots again: runs Orvane (release) under a virtual
# X server in a throw-away account whose domains are the files of tests/data,
# and photographs the domain browser and a document window with tabs.
# Usage: scripts/screenshots.sh [OUTPUT-FOLDER]   (default: docs/screenshots)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
out="$(realpath -m "${1:-$root/docs/screenshots}")"
"$root/scripts/install-deps.sh" xvfb xdotool imagemagick fonts-dejavu-core
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target orvane
orvane="$root/build/release/src/app/orvane"

work="$(mktemp -d)"
xvfb_pid=""
app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null || true
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

# An account with a few domains, a per-host one and a machine folder, all from tests/data.
data="$root/tests/data"
prefs="$work/home/Library/Preferences"
mkdir -p "$prefs/ByHost" "$work/machine" "$out"
cp "$data/sample.plist" "$prefs/com.example.Greeter.plist"
cp "$data/defaults-sample.plist" "$prefs/com.example.Defaults.plist"
cp "$data/sample.plist" "$prefs/.GlobalPreferences.plist"
cp "$data/sample.plist" "$prefs/ByHost/com.example.Screen.00000000-0000-0000-0000-000000000001.plist"
cp "$data/defaults-sample.plist" "$work/machine/com.example.Machine.plist"
documents=("$work/Info.plist" "$work/Settings.plist" "$work/Defaults.plist")
cp "$data/sample.plist" "${documents[0]}"
cp "$data/sample.plist" "${documents[1]}"
cp "$data/defaults-sample.plist" "${documents[2]}"

display=":$((90 + RANDOM % 400))"
Xvfb "$display" -screen 0 1280x900x24 -nolisten tcp >/dev/null 2>&1 &
xvfb_pid=$!
export DISPLAY="$display" HOME="$work/home" ORVANE_LOCAL_PREFERENCES="$work/machine"
export ORVANE_HOST_UUID=00000000-0000-0000-0000-000000000001 QT_QPA_PLATFORM=xcb
for _ in $(seq 50); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done

# Runs Orvane with the arguments, waits for a window whose title holds NAME,
# and photographs it into FILE once it has painted.
shoot() {
  local name="$1" file="$2"
  shift 2
  "$orvane" "$@" >/dev/null 2>&1 &
  app_pid=$!
  local window
  window="$(timeout 20 xdotool search --sync --onlyvisible --name "$name" | head -n 1)"
  xdotool windowfocus --sync "$window" 2>/dev/null || true
  sleep 1
  if [ -n "${keys:-}" ]; then
    # shellcheck disable=SC2086 # the keys are separate words
    xdotool key --delay 150 $keys
    sleep 0.5
  fi
  import -window "$window" "$out/$file"
  kill "$app_pid"
  wait "$app_pid" 2>/dev/null || true
  app_pid=""
  echo "wrote $out/$file"
}

keys="Right Down Down Down Down" shoot "Domain Browser" domain-browser.png
keys="Down Down Down Right Down" shoot "Defaults.plist" document-tabs.png "${documents[@]}"
