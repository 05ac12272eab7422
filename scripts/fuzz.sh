#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for the given number of
# seconds (default 600).
#   scripts/fuzz.sh [--explore] [SECONDS] [TARGET...]   targets: xml binary openstep archive defaults
#
# A plain run grows fuzz/corpus/<target>/ (committed, replayed by the tests): it
# starts from project-made inputs only (that corpus, fuzz/seeds/, tests/data/)
# and adds the smallest inputs that reach something new. Property lists other
# people wrote must not reach the repository, nor anything mutated from them,
# so the shared corpus is used only by --explore, whose queue stays in
# fuzz-out/ and is never merged. Crashes, hangs and out-of-memory inputs land
# in fuzz-out/<target>/findings/.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
explore=0
if [ "${1:-}" = --explore ]; then explore=1; shift; fi
seconds="${1:-600}"
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(xml binary openstep archive defaults)
max_len=4096 # small inputs keep the committed corpus small and quick to replay
[ $explore = 1 ] && max_len=131072 # real files are larger, and nothing is kept
shared="${ORVANE_CORPUS:-$root/../shared/corpus}"

"$root/scripts/install-deps.sh" clang libclang-rt-14-dev
cmake --preset fuzz -S "$root" >/dev/null
cmake --build "$root/build/fuzz"

# Copies the project's own inputs for target $1 into folder $2.
stage_project_seeds() {
  local t="$1" into="$2"
  rm -rf "$into" && mkdir -p "$into"
  local from=("$root/fuzz/corpus/$t" "$root/fuzz/seeds/$t")
  case "$t" in
    xml) from+=("$root/tests/data/sample.plist" "$root/tests/data/defaults-sample.plist" "$root/tests/data/broken.plist") ;;
    archive) from+=("$root/tests/data/archive") ;;
    defaults) from+=("$root/tests/data/defaults-seeds") ;;
  esac
  for f in "${from[@]}"; do
    if [ -d "$f" ]; then find "$f" -maxdepth 1 -type f -exec cp -t "$into" {} +; elif [ -f "$f" ]; then cp "$f" "$into"; fi
  done
}

# Copies the shared corpus's inputs for target $1 into folder $2 (exploration only).
stage_shared_seeds() {
  local t="$1" into="$2"
  rm -rf "$into" && mkdir -p "$into"
  case "$t" in
    xml | binary | openstep)
      for d in "$shared/plists/$t" "$shared/plists/malformed"; do
        [ -d "$d" ] && find "$d" -maxdepth 1 -type f -exec cp -t "$into" {} +
      done ;;
    defaults)
      # One seed per real command line, so mutations start from whole commands.
      if [ -f "$shared/defaults/commands.txt" ]; then
        grep -v '^#' "$shared/defaults/commands.txt" | split -l 1 -a 4 - "$into/line-"
      fi ;;
  esac
}

# Fails when any file of folder $1 is byte-identical to a file of the shared
# corpus. Inputs under 16 bytes are left out: the fuzzer finds those on its own
# (the shared corpus has a one-byte file, and so may the queue).
refuse_shared_files() {
  [ -d "$shared" ] || return 0
  local found
  found="$(comm -12 <(find "$shared" -type f -size +15c -exec sha256sum {} + | cut -d' ' -f1 | sort -u) \
    <(find "$1" -type f -size +15c -exec sha256sum {} + | cut -d' ' -f1 | sort -u))"
  if [ -n "$found" ]; then
    echo "refusing to merge: $1 holds files of the shared corpus" >&2
    return 1
  fi
}

status=0
for t in "${targets[@]}"; do
  case "$t" in xml | binary | openstep | archive | defaults) ;; *) echo "unknown target $t" >&2; exit 2 ;; esac
  fuzzer="$root/build/fuzz/fuzz/fuzz_$t"
  out="$root/fuzz-out/$t"
  mkdir -p "$out/findings"
  stage_project_seeds "$t" "$out/project-seeds"
  # The queue is new on every run, so nothing an earlier exploration left can be merged.
  if [ $explore = 1 ]; then
    queue="$out/explore"
    stage_shared_seeds "$t" "$out/shared-seeds"
    seeds=("$out/project-seeds" "$out/shared-seeds")
  else
    queue="$out/grown"
    seeds=("$out/project-seeds")
  fi
  rm -rf "$queue" && mkdir -p "$queue"
  echo "== fuzz_$t for ${seconds}s$([ $explore = 1 ] && echo ', exploring from the shared corpus')"
  "$fuzzer" "$queue" "${seeds[@]}" -dict="$root/fuzz/dictionaries/$t.dict" \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len="$max_len" \
    -print_final_stats=1 -artifact_prefix="$out/findings/" || status=1
  [ $explore = 1 ] && continue

  # Existing inputs stay and new ones come only for new coverage, so a run
  # changes few files of the repository.
  merged="$out/merged"
  rm -rf "$merged" && mkdir -p "$merged"
  [ -d "$root/fuzz/corpus/$t" ] && cp -p "$root/fuzz/corpus/$t"/* "$merged"/
  "$fuzzer" -merge=1 -max_len="$max_len" -timeout=10 -rss_limit_mb=2048 \
    "$merged" "$out/project-seeds" "$queue" 2>"$out/merge.log" \
    || { echo "merge failed, see $out/merge.log" >&2; exit 1; }
  refuse_shared_files "$merged"
  rm -rf "$root/fuzz/corpus/$t"
  mkdir -p "$root/fuzz/corpus"
  mv "$merged" "$root/fuzz/corpus/$t"
  echo "== fuzz/corpus/$t: $(find "$root/fuzz/corpus/$t" -type f | wc -l) inputs, $(du -sh --apparent-size "$root/fuzz/corpus/$t" | cut -f1)"
done
exit $status
