#!/usr/bin/env bash
# How the program ends when it cannot start: with no display, one line that says so and how to run
# it headless, exit 1 (not the toolkit's abort); with a simulated ECU that cannot start, the reason.
#   headless_start_test.sh PROGRAM
set -uo pipefail
program="$1"
data="$(mktemp -d)"
trap 'rm -rf "$data"' EXIT
failures=0

# expect NAME CODE PATTERN ENV... [-- ARGS...]: runs the program with ARGS under ENV (env's
# settings), checks its exit code and that its error output is one line matching PATTERN.
expect() {
  local name="$1" code="$2" pattern="$3"
  shift 3
  local settings=() out rc lines
  while [ $# -gt 0 ] && [ "$1" != "--" ]; do
    settings+=("$1")
    shift
  done
  [ $# -gt 0 ] && shift
  out="$(env "${settings[@]}" "$program" --data-dir "$data" "$@" 2>&1 > /dev/null < /dev/null)"
  rc=$?
  lines="$(printf '%s\n' "$out" | grep -cv -e '^$' -e '^QStandardPaths:')"
  if [ "$rc" != "$code" ] || [ "$lines" != 1 ] || ! grep -qE -- "$pattern" <<< "$out"; then
    echo "FAIL $name: exit $rc (want $code), $lines lines, output:"
    printf '%s\n' "$out" | sed 's/^/  /'
    failures=$((failures + 1))
  else
    echo "ok   $name"
  fi
}

headless='to run it headless: xvfb-run -a morvane-vela .*QT_QPA_PLATFORM=offscreen'
expect "no display set" 1 "^morvane-vela needs a display \(DISPLAY is not set\); $headless" \
  -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM
expect "a display that is not there" 1 \
  "^morvane-vela needs a display \(cannot open display :4711\); $headless" \
  -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM DISPLAY=:4711
expect "a window system that is not there" 1 \
  "^morvane-vela needs a display \(the window system \"nothere\" could not be started\)" \
  QT_QPA_PLATFORM=nothere
why="cannot open /no/ecu.sm1: No such file or directory"
expect "a simulated ECU that cannot start" 1 "^morvane-vela: the simulated ECU could not start: $why$" \
  QT_QPA_PLATFORM=offscreen -- --simulate --sim-args "--image /no/ecu.sm1"
exit $((failures > 0))
