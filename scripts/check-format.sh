#!/usr/bin/env bash
# Fails when a C++ file git tracks is not formatted as .clang-format says, and names the files.
#   scripts/check-format.sh
set -euo pipefail
cd "$(dirname "$0")/.."
report="$(mktemp)"
trap 'rm -f "$report"' EXIT
mapfile -t files < <(git ls-files '*.cpp' '*.h')
if ! clang-format --dry-run --Werror "${files[@]}" 2> "$report"; then
  grep -oE '^[^ :]+\.(cpp|h):' "$report" | tr -d ':' | sort -u | sed 's/^/not formatted: /'
  echo "run clang-format -i on them (Google base, 100 columns)"
  exit 1
fi
echo "every C++ file is formatted"
