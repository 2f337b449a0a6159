#!/usr/bin/env bash
# Runs a command the way a screen reader's desktop runs it: on a session bus of its own with the
# accessibility bus launched and enabled, so that the toolkit's accessibility bridge is active
# in the program (QAccessible::isActive() is true). With --listen LISTENER, the program LISTENER
# (build/bench/vela-a11y-listener) runs beside the command and registers for every event the way
# a screen reader does; without a registered listener the bridge sends next to nothing.
#
#   scripts/with-accessibility-bus.sh [--listen LISTENER] COMMAND [ARGS...]
#
# What activates the bridge on Debian 12's Qt 6.4, as measured: a running at-spi bus launcher
# (at-spi2-core) on the session bus that says accessibility is on (--a11y=1), or the launcher
# together with QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1. That variable alone, with no session bus or no
# launcher, activates nothing, and neither does a session bus alone.
set -euo pipefail

if [ "${1:-}" != "--on-bus" ]; then
  exec env -u DBUS_SESSION_BUS_ADDRESS -u AT_SPI_BUS_ADDRESS dbus-run-session -- "$0" --on-bus "$@" \
    2> >(grep -v -e 'Failed to set fd limit' -e 'Activating service' -e 'Successfully activated' >&2)
fi
shift
listener=""
if [ "${1:-}" = "--listen" ]; then
  listener="$2"
  shift 2
fi

# A runtime folder of its own: the launcher puts its bus's socket there, so that two runs at
# once never share one.
XDG_RUNTIME_DIR="$(mktemp -d)"
export XDG_RUNTIME_DIR
/usr/libexec/at-spi-bus-launcher --launch-immediately --a11y=1 > /dev/null 2>&1 &
launcher=$!
listening=""
cleanup() {
  if [ -n "$listening" ]; then kill "$listening" 2> /dev/null || true; wait "$listening" || true; fi
  kill "$launcher" 2> /dev/null || true
  wait "$launcher" 2> /dev/null || true
  rm -rf "$XDG_RUNTIME_DIR"
}
trap cleanup EXIT
# The launcher owns its name on the session bus once its own bus is up.
for _ in $(seq 1 100); do
  if dbus-send --session --print-reply --dest=org.freedesktop.DBus / \
    org.freedesktop.DBus.NameHasOwner string:org.a11y.Bus 2> /dev/null | grep -q 'boolean true'; then
    break
  fi
  sleep 0.1
done
if [ -n "$listener" ]; then
  "$listener" > >(sed 's/^/  /' >&2) &
  listening=$!
  sleep 1
fi
"$@"
