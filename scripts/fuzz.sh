#!/usr/bin/env bash
# Runs fuzz targets built in BUILD for SECONDS each:  fuzz.sh BUILD SECONDS TARGET...
# A target starts from its seeds in fuzz/corpus/TARGET/ and keeps what it finds in
# BUILD/fuzz-work/corpus/TARGET/, so a later run goes on from there. An input that breaks an
# invariant, crashes or hangs is written to BUILD/fuzz-work/crashes/TARGET/ and fails the run;
# every target runs either way. The full output of each run is BUILD/fuzz-work/TARGET.log.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
seconds=$2
shift 2

# The longest input each target is given: room for a few chunks around an upload reply, and
# files well beyond the 1023 bytes of a map (a longer one only repeats the same refusal).
max_len_of() {
  case $1 in
    receive) echo 8192 ;;
    apply-image) echo 1100 ;;
    map-file) echo 2100 ;;
    *) echo 4096 ;;
  esac
}

failed=()
for target in "$@"; do
  work="$build/fuzz-work"
  mkdir -p "$work/corpus/$target" "$work/crashes/$target"
  log="$work/$target.log"
  echo "fuzz $target: ${seconds} s"
  if "$build/fuzz/vela-fuzz-$target" -max_total_time="$seconds" -timeout=10 \
    -max_len="$(max_len_of "$target")" -print_final_stats=1 \
    -artifact_prefix="$work/crashes/$target/" \
    "$work/corpus/$target" "fuzz/corpus/$target" >"$log" 2>&1; then
    grep -E '^(Done|stat::number_of_executed_units|stat::new_units_added)' "$log" || true
  else
    tail -n 60 "$log"
    failed+=("$target")
  fi
done

if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: invariants broken in: ${failed[*]} (inputs in $build/fuzz-work/crashes/)"
  exit 1
fi
