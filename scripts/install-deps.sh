#!/usr/bin/env bash
# Installs the Debian packages that building, testing and a headless run need.
# Safe to run again: it asks apt only for what is missing. With --fuzz it also installs clang,
# which only `make fuzz` needs; with --format clang-format and python3, which only the code checks
# (`make check-format`, `make check-structure`) need; with --list it only prints every package it
# may see to (scripts/check-packages.sh compares the builds against that list).
set -euo pipefail

packages=(
  cmake make ninja-build g++ pkg-config
  qt6-base-dev qt6-serialport-dev qt6-charts-dev
  # Qt Charts' CMake package needs Qt's OpenGL module, which qt6-base-dev only recommends.
  libqt6opengl6-dev
  libgl1-mesa-dev libgl1-mesa-dri
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth fonts-dejavu-core
  # The accessibility tests and `make bench` run the program on an accessibility bus of its own
  # (scripts/with-accessibility-bus.sh): a session bus and the at-spi bus launcher.
  dbus-daemon at-spi2-core
  # CI's `make fuzz` compiles with clang's own headers and links its sanitizer runtimes; they are
  # installed with the rest so that every build CI makes reads only what this list brings.
  libclang-common-14-dev libclang-rt-14-dev
)
# CMake picks clang's own archiver and linker tools for the fuzz build when they are there.
fuzz_packages=(clang-14 llvm-14 lld-14)
format_packages=(clang-format python3)
case "${1:-}" in
  --fuzz) packages+=("${fuzz_packages[@]}") ;;
  --format) packages+=("${format_packages[@]}") ;;
  --list)
    # Everything any make target may install: the builds CI checks include the fuzz build.
    echo "${packages[*]} ${fuzz_packages[*]} ${format_packages[*]}"
    exit 0
    ;;
esac

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
