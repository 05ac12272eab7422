#!/usr/bin/env bash
# Times the application's start, whole process, from start to the outline's
# first paint (ORVANE_QUIT_WHEN_SHOWN), a few runs in a row each:
#   `orvane FILE` on the generated 94 MB file (budget set with the document window);
#   `orvane` showing the domain browser over the generated account of 600
#   domains (budget 0.3 s).
# Builds the release application and the bench preset's writers first.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
runs="${1:-5}"
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target orvane >/dev/null
cmake --preset bench -S "$root" >/dev/null
cmake --build "$root/build/bench" --target write-generated-preferences write-generated-account >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home" "$work/account"
"$root/build/bench/bench/write-generated-preferences" "$work/generated.plist"
"$root/build/bench/bench/write-generated-account" "$work/account"
echo "file: $(du -m "$work/generated.plist" | cut -f1) MB"
echo "account: $(find "$work/account" -name '*.plist' | wc -l) domains"

# Runs orvane with the rest of the arguments, HOME set to $1, and prints the time taken.
timed() {
  local home="$1" label="$2"
  shift 2
  local start
  start=$(date +%s%N)
  HOME="$home" ORVANE_LOCAL_PREFERENCES="$home/machine" \
    ORVANE_HOST_UUID=0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9 \
    QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen}" ORVANE_QUIT_WHEN_SHOWN=1 \
    "$root/build/release/src/app/orvane" "$@"
  echo "$label: $(( ($(date +%s%N) - start) / 1000000 )) ms"
}

for _ in $(seq "$runs"); do
  timed "$work/home" "orvane FILE to a shown tree" "$work/generated.plist"
done
for _ in $(seq "$runs"); do
  timed "$work/account" "orvane to a shown browser (600 domains)"
done
