#!/usr/bin/env bash
# The big-file figures, whole process, side by side with the anchors in the
# same minutes (this machine's speed drifts from hour to hour, so only ratios
# taken together mean anything). Each line alternates ours and the anchor a few
# times and prints medians of wall time and peak resident memory:
#   the in-process codec benchmark and libplist's in-process parse;
#   `orvane-plist lint` / `convert` against libplist and `plistutil`;
#   `orvane FILE` offscreen until the outline is first painted.
# Usage: bench/large-files.sh [RUNS]   (needs libplist-dev and libplist-utils)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
anchors="${ORVANE_ANCHORS:-$root/../shared/anchors}"
runs="${1:-3}"
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target orvane orvane-plist >/dev/null
cmake --preset bench -S "$root" >/dev/null
cmake --build "$root/build/bench" --target write-generated-music-library bench_LargeFileBenchmark >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
g++ -O2 -std=c++20 -o "$work/libplist_load" "$anchors/libplist_load.cpp" $(pkg-config --cflags --libs libplist-2.0)
"$root/build/bench/bench/write-generated-music-library" "$work/library.xml" "$work/library.plist"
mkdir -p "$work/home"
tool="$root/build/release/src/cli/orvane-plist"
app="$root/build/release/src/app/orvane"
echo "files: library.xml $(stat -c %s "$work/library.xml") bytes, library.plist $(stat -c %s "$work/library.plist") bytes"

# Prints "seconds kilobytes" for one run of the command.
measure() {
  /usr/bin/time -f "%e %M" -o "$work/time" "$@" >/dev/null 2>&1 || true
  cat "$work/time"
}
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# compare LABEL -- OURS... -- ANCHOR...: alternates the two, prints medians.
compare() {
  local label="$1"
  shift 2
  local ours=() anchor=()
  while [ "$1" != "--" ]; do ours+=("$1"); shift; done
  shift
  anchor=("$@")
  : >"$work/a"; : >"$work/b"
  for _ in $(seq "$runs"); do
    measure "${ours[@]}" >>"$work/a"
    [ ${#anchor[@]} -gt 0 ] && measure "${anchor[@]}" >>"$work/b"
  done
  local s m as am
  s=$(cut -d' ' -f1 "$work/a" | median); m=$(cut -d' ' -f2 "$work/a" | median)
  if [ ${#anchor[@]} -gt 0 ]; then
    as=$(cut -d' ' -f1 "$work/b" | median); am=$(cut -d' ' -f2 "$work/b" | median)
    printf '%-44s %6.2f s %5d MiB | anchor %6.2f s %5d MiB | ratio %.2f\n' "$label" "$s" $((m / 1024)) "$as" $((am / 1024)) \
      "$(awk -v a="$s" -v b="$as" 'BEGIN { print a / b }')"
  else
    printf '%-44s %6.2f s %5d MiB\n' "$label" "$s" $((m / 1024))
  fi
}

echo "== in process (libplist parse_s of the same files, then ours)"
for f in library.xml library.plist; do
  for _ in $(seq "$runs"); do "$work/libplist_load" "$work/$f"; echo; done |
    sed -n 's/.*"parse_s":\([0-9.]*\).*/\1/p' | median | sed "s/^/libplist parse $f: /; s/$/ s/"
done
"$root/build/bench/bench/bench_LargeFileBenchmark" 2>/dev/null | grep -E '^(read|write|release)'

echo "== whole process (median of $runs, alternated)"
compare "lint library.xml (anchor: libplist load)" -- "$tool" lint "$work/library.xml" -- "$work/libplist_load" "$work/library.xml"
compare "lint library.plist (anchor: libplist load)" -- "$tool" lint "$work/library.plist" -- "$work/libplist_load" "$work/library.plist"
compare "convert xml1 library.plist (anchor: plistutil)" -- "$tool" convert xml1 -o "$work/out.xml" "$work/library.plist" \
  -- plistutil -i "$work/library.plist" -o "$work/plistutil.xml"
compare "convert binary1 library.xml" -- "$tool" convert binary1 -o "$work/out.plist" "$work/library.xml" --
export HOME="$work/home" QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen}" ORVANE_QUIT_WHEN_SHOWN=1
compare "orvane library.xml to a shown tree" -- "$app" "$work/library.xml" --
compare "orvane library.plist to a shown tree" -- "$app" "$work/library.plist" --
