#!/usr/bin/env bash
# Times `orvane FILE` on the generated 94 MB file, whole process, from start to
# the outline's first paint (ORVANE_QUIT_WHEN_SHOWN), a few runs in a row.
# Builds the release application and the bench preset's file writer first.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
runs="${1:-5}"
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target orvane >/dev/null
cmake --preset bench -S "$root" >/dev/null
cmake --build "$root/build/bench" --target write-generated-preferences >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home"
"$root/build/bench/bench/write-generated-preferences" "$work/generated.plist"
echo "file: $(du -m "$work/generated.plist" | cut -f1) MB"
for _ in $(seq "$runs"); do
  start=$(date +%s%N)
  HOME="$work/home" QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen}" ORVANE_QUIT_WHEN_SHOWN=1 \
    "$root/build/release/src/app/orvane" "$work/generated.plist"
  echo "orvane FILE to a shown tree: $(( ($(date +%s%N) - start) / 1000000 )) ms"
done
