#!/usr/bin/env bash
# Runs a command on an X server of its own: a virtual one (Xvfb) that lives as long as the
# command. Each GUI test gets one, so that tests which need their window to be the active one
# can run beside each other.
#
#   scripts/with-display.sh COMMAND [ARGS...]
set -euo pipefail

fifo_dir="$(mktemp -d)"
mkfifo "$fifo_dir/display"
# -displayfd: the server picks a free display number itself and writes it once it is ready.
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3> "$fifo_dir/display" 2> /dev/null &
server=$!
trap 'kill "$server" 2> /dev/null || true; wait "$server" 2> /dev/null || true; rm -rf "$fifo_dir"' EXIT
read -r -t 30 number < "$fifo_dir/display" || { echo "with-display: Xvfb did not start" >&2; exit 1; }
export DISPLAY=":$number"
"$@"
