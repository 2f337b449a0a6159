#!/usr/bin/env bash
# Starts the program; with no display (a headless machine) it runs under a virtual X server.
set -euo pipefail
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$@"
fi
exec xvfb-run -a -s "-screen 0 1600x1000x24" "$@"
