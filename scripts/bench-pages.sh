#!/usr/bin/env bash
# The processor time of every page, measured twice by vela-link-cpu --pages: on a plain desktop,
# and on an accessibility bus with a stand-in screen reader listening (with-accessibility-bus.sh
# and vela-a11y-listener). Prints one table: each page's figure (every thread of the program)
# both ways, and each as a multiple of the Help page's in the same run.
#
#   scripts/bench-pages.sh [BUILD] [SECONDS] [ROUNDS]      defaults: build 5 3
set -euo pipefail

build="${1:-build}"
seconds="${2:-5}"
rounds="${3:-3}"
here="$(cd "$(dirname "$0")" && pwd)"
plain="$(mktemp)"
bus="$(mktemp)"
trap 'rm -f "$plain" "$bus"' EXIT

bash "$here/run.sh" "$build/bench/vela-link-cpu" --pages --rounds "$rounds" "$seconds" > "$plain"
bash "$here/with-accessibility-bus.sh" --listen "$build/bench/vela-a11y-listener" \
  bash "$here/run.sh" "$build/bench/vela-link-cpu" --pages --rounds "$rounds" \
  "$seconds" > "$bus"

echo "Without accessibility:"
cat "$plain"
echo
echo "On an accessibility bus, a stand-in screen reader listening:"
cat "$bus"
awk '
  # "  whole program, Fuel Map 1 with its graph   2.35 % (...)   2.02 % (...)"
  /^  whole program, / {
    line = substr($0, 18)
    split(line, parts, / +[0-9.]+ %/)
    page = parts[1]
    match(line, /[0-9.]+ %/)
    figure = substr(line, RSTART, RLENGTH - 2) + 0
    if (FILENAME == ARGV[1]) { order[++pages] = page; without[page] = figure }
    else { with_bus[page] = figure }
  }
  END {
    printf "\n  %-30s %22s   %22s\n", "page (all threads)", "without accessibility",
           "with a bus and a reader"
    for (i = 1; i <= pages; ++i) {
      page = order[i]
      printf "  %-30s %8.2f %% (%4.2f x Help)   %8.2f %% (%4.2f x Help)\n", page, without[page],
             without[page] / without["Help"], with_bus[page], with_bus[page] / with_bus["Help"]
    }
  }' "$plain" "$bus"
