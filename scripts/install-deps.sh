#!/usr/bin/env bash
# Installs the Debian packages that building, testing and a headless run need.
# Safe to run again: it asks apt only for what is missing. With --fuzz it also installs clang and
# its fuzzing and sanitizer runtimes, which only `make fuzz` needs.
set -euo pipefail

packages=(
  cmake make g++ pkg-config
  qt6-base-dev qt6-serialport-dev qt6-charts-dev
  libgl1-mesa-dev libgl1-mesa-dri
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth fonts-dejavu-core
)
if [ "${1:-}" = "--fuzz" ]; then packages+=(clang-14 libclang-rt-14-dev); fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
echo "Installing: ${missing[*]}"
"${sudo_cmd[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
