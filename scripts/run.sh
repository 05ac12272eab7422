#!/usr/bin/env bash
# Builds Orvane (release) and starts it: scripts/run.sh [FILE...]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target orvane orvane-plist
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "note: no DISPLAY or WAYLAND_DISPLAY is set; Orvane needs a desktop session (or xvfb-run)." >&2
fi
exec "$root/build/release/src/app/orvane" "$@"
