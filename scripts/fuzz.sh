#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for the given number of
# seconds (default 600), seeded from the shared corpus and tests/data.
# Crashes, hangs and out-of-memory inputs land in fuzz-out/<target>/findings/.
#   scripts/fuzz.sh [SECONDS] [TARGET...]     targets: xml binary openstep archive defaults
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
seconds="${1:-600}"
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(xml binary openstep archive defaults)

"$root/scripts/install-deps.sh" clang libclang-rt-14-dev
cmake --preset fuzz -S "$root" >/dev/null
cmake --build "$root/build/fuzz"

corpus="${ORVANE_CORPUS:-$root/../shared/corpus}"
for t in "${targets[@]}"; do
  out="$root/fuzz-out/$t"
  mkdir -p "$out/queue" "$out/findings"
  case "$t" in
    xml) seeds=("$corpus/plists/xml" "$corpus/plists/malformed") ;;
    binary) seeds=("$corpus/plists/binary" "$corpus/plists/malformed") ;;
    openstep) seeds=("$corpus/plists/openstep" "$corpus/plists/malformed") ;;
    archive) seeds=("$root/tests/data/archive") ;;
    defaults)
      # One seed per real command line, so mutations start from whole commands.
      lines="$out/corpus-lines"
      rm -rf "$lines" && mkdir -p "$lines"
      if [ -f "$corpus/defaults/commands.txt" ]; then
        grep -v '^#' "$corpus/defaults/commands.txt" | split -l 1 -a 4 - "$lines/line-"
      fi
      seeds=("$root/tests/data/defaults-seeds" "$lines") ;;
    *) echo "unknown target $t" >&2; exit 2 ;;
  esac
  existing=()
  for s in "${seeds[@]}"; do [ -d "$s" ] && existing+=("$s"); done
  echo "== fuzz_$t for ${seconds}s"
  "$root/build/fuzz/fuzz/fuzz_$t" "$out/queue" "${existing[@]}" \
    -dict="$root/fuzz/dictionaries/$t.dict" -max_total_time="$seconds" \
    -timeout=10 -rss_limit_mb=2048 -max_len=131072 -print_final_stats=1 \
    -artifact_prefix="$out/findings/"
done
