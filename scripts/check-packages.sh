#!/usr/bin/env bash
# Checks that a fresh machine can build what this build directory built: every Debian package
# whose CMake package files, headers or libraries the build read must be one that
# scripts/install-deps.sh installs, or one that those pull in through their Depends (the script
# installs without Recommends, so a package that only a Recommends brought here does not count).
#
#   scripts/check-packages.sh [BUILD_DIR]      (default: build)
#
# What the build read comes from the configure cache (the folders of the CMake packages found,
# the tools chosen), from the link lines (the libraries linked) and from the compilers'
# dependency files (every header of every object).
# Prints one line per package read and exits 1 when one of them is not covered.
set -euo pipefail
export LC_ALL=C

build_dir="${1:-build}"
root="$(cd "$(dirname "$0")/.." && pwd)"
cache="$build_dir/CMakeCache.txt"
if [ ! -f "$cache" ]; then
  echo "check-packages: $cache not found; configure and build first" >&2
  exit 2
fi
build_abs="$(cd "$build_dir" && pwd)"
source_dir="$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache")"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# 1. The files the build read, outside the source and build trees.
{
  # CMake package folders (those that hold a package's config file): every file in them.
  sed -n 's/^[A-Za-z0-9_]*_DIR:PATH=\(\/.*\)$/\1/p' "$cache" | while read -r dir; do
    if compgen -G "$dir/*[Cc]onfig.cmake" > /dev/null; then find "$dir" -maxdepth 1 -type f; fi
  done
  # The tools the configure step chose (compiler, archiver, make, pkg-config).
  sed -n 's/^\(CMAKE_[A-Z_]*\|[A-Za-z0-9_]*_EXECUTABLE\):FILEPATH=\(\/.*\)$/\2/p' "$cache" |
    while read -r file; do [ -f "$file" ] && echo "$file"; done
  # The libraries every link named by path.
  find "$build_abs" \( -name link.txt -o -name build.ninja \) -type f -print0 | xargs -0 -r cat |
    tr ' ' '\n' | grep -E '^/.*\.(so|a)(\.[0-9.]+)?$' || true
  # Headers, from the compilers' dependency files: Ninja keeps them in its own log, the Makefile
  # generator leaves them beside the objects (*.o.d, precompiled headers *.gch.d).
  if [ -f "$build_abs/build.ninja" ]; then
    ninja -C "$build_abs" -t deps | sed -n 's/^    \(\/.*\)$/\1/p'
  else
    find "$build_abs" -name '*.d' -type f -print0 |
      xargs -0 -r cat | tr ' \\' '\n\n' | grep '^/' || true
  fi
} | awk -v src="$source_dir/" -v bld="$build_abs/" 'index($0, src) != 1 && index($0, bld) != 1' |
  sort -u > "$work/read"

# Paths as the compiler wrote them may hold "..": each is made plain, and also has its links
# resolved, so that either spelling finds the package that installed the file.
{
  paste "$work/read" <(xargs -r -d '\n' realpath -m -s < "$work/read")
  paste "$work/read" <(xargs -r -d '\n' realpath -m < "$work/read")
} > "$work/spellings"

# 2. Which installed package owns each of those files (from dpkg's own file lists).
awk 'FNR == 1 {p = FILENAME; sub(/.*\//, "", p); sub(/\.list$/, "", p); sub(/:.*/, "", p)}
     {print $0 "\t" p}' /var/lib/dpkg/info/*.list > "$work/owners"
awk -F'\t' 'NR == FNR {owner[$1] = $2; next} ($2 in owner) {print $1 "\t" owner[$2]}' \
  "$work/owners" "$work/spellings" | sort -u -t$'\t' -k1,1 > "$work/owned"
awk -F'\t' '{print $2 "\t" $1}' "$work/owned" | sort -u -t$'\t' -k1,1 > "$work/read-packages"
cut -f1 "$work/owned" | comm -23 "$work/read" - > "$work/unowned"

# 3. What install-deps.sh installs, and everything that pulls in by Depends and Pre-Depends.
bash "$root/scripts/install-deps.sh" --list | tr ' ' '\n' | sed '/^$/d' > "$work/roots"
dpkg-query -W -f='${db:Status-Abbrev}\t${Package}\t${Provides}\t${Depends}, ${Pre-Depends}\n' |
  awk -F'\t' '$1 ~ /^ii/' | cut -f2- > "$work/status"
awk -F'\t' '
  function bare(s) { gsub(/\(.*\)|:[a-z0-9]+/, "", s); gsub(/^ +| +$/, "", s); return s }
  FILENAME == ARGV[1] {
    pkg = $1; deps[pkg] = $3
    n = split($2, provided, ",")
    for (i = 1; i <= n; i++) { v = bare(provided[i]); if (v != "") providers[v] = providers[v] " " pkg }
    installed[pkg] = 1
    next
  }
  { queue[++tail] = $1 }
  END {
    for (head = 1; head <= tail; head++) {
      p = queue[head]
      if (p in seen) continue
      seen[p] = 1
      if (!(p in installed)) {
        m = split(providers[p], via, " ")
        for (j = 1; j <= m; j++) queue[++tail] = via[j]
        continue
      }
      n = split(deps[p], clauses, ",")
      for (i = 1; i <= n; i++) {
        k = split(clauses[i], alternatives, "|")
        for (j = 1; j <= k; j++) { d = bare(alternatives[j]); if (d != "") queue[++tail] = d }
      }
    }
    for (p in seen) if (p in installed) print p
  }' "$work/status" "$work/roots" | sort -u > "$work/allowed"

# 4. The verdict.
missing=0
while IFS=$'\t' read -r pkg example; do
  if grep -qxF "$pkg" "$work/allowed"; then
    printf '  ok       %-34s %s\n' "$pkg" "$example"
  else
    printf '  MISSING  %-34s %s\n' "$pkg" "$example"
    missing=$((missing + 1))
  fi
done < "$work/read-packages"
while read -r f; do
  printf '  UNOWNED  %-34s %s\n' "(no package)" "$f"
  missing=$((missing + 1))
done < "$work/unowned"
echo "check-packages: the build in $build_dir read $(wc -l < "$work/read") files outside the" \
  "project from $(wc -l < "$work/read-packages") packages"
if [ "$missing" -gt 0 ]; then
  echo "check-packages: $missing package(s) above are read by the build but neither installed by" \
    "scripts/install-deps.sh nor pulled in by its Depends (or come from no package at all):" \
    "add them to its list" >&2
  exit 1
fi
