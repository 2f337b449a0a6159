#!/usr/bin/env bash
# Fails when a C++ file git tracks is not formatted as .clang-format says, and names the files.
#   scripts/check-format.sh
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files '*.cpp' '*.h')
if ! clang-format --dry-run --Werror "${files[@]}" 2> /tmp/vela-format.$$; then
  grep -oE '^[^ :]+\.(cpp|h):' /tmp/vela-format.$$ | tr -d ':' | sort -u | sed 's/^/not formatted: /'
  echo "run clang-format -i on them (Google base, 100 columns)"
  rm -f /tmp/vela-format.$$
  exit 1
fi
rm -f /tmp/vela-format.$$
echo "every C++ file is formatted"
