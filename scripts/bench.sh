#!/usr/bin/env bash
# Builds the benchmarks in release mode and runs them on the shared corpus.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/install-deps.sh"
cmake --preset bench -S "$root" >/dev/null
cmake --build "$root/build/bench"
for b in "$root"/build/bench/bench/bench_*; do "$b" "$@"; done
