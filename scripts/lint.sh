#!/usr/bin/env bash
# Checks what the compiler does not: the formatting of every source (scripts/format.sh --check),
# then clang-tidy 14 with the root .clang-tidy over every translation unit of the default build.
# Any finding fails it; both run either way.
#
#   scripts/lint.sh           both, with one clang-tidy per core
#   scripts/lint.sh -j 2      with two
#
# The fuzz targets and the benchmarks are not in the default build, so clang-tidy skips them,
# and the sources that the build generates too.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
case "${1:-}" in
  -j) jobs="$2" ;;
  "") ;;
  -h|--help) sed -n '2,10p' "$0"; exit 0 ;;
  *) echo "unknown option $1" >&2; exit 2 ;;
esac

echo "-- formatting"
formatted=1
scripts/format.sh --check || formatted=0

echo "-- clang-tidy"
build_dir=build/default
cmake --preset default >/dev/null # keeps the list of translation units current

root=$(pwd)
mapfile -t units < <(sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build_dir/compile_commands.json" |
                     grep -F "$root/" | grep -vF "$root/build/" | sort)

# The build uses g++, whose warning options clang may not know.
extra_args=(-extra-arg=-Wno-unknown-warning-option)
log="$build_dir/clang-tidy.log"
status=0
if command -v run-clang-tidy-14 >/dev/null || command -v run-clang-tidy >/dev/null; then
  runner=run-clang-tidy-14
  command -v "$runner" >/dev/null || runner=run-clang-tidy
  # run-clang-tidy (itself Python) takes a regular expression for the files.
  pattern=$(python3 -c 'import re, sys
print("|".join("^%s$" % re.escape(unit) for unit in sys.argv[1:]))' "${units[@]}")
  "$runner" -quiet -j "$jobs" -p "$build_dir" "${extra_args[@]}" "$pattern" \
    >"$log" 2>&1 || status=$?
else
  printf '%s\0' "${units[@]}" |
    xargs -0 -n 1 -P "$jobs" clang-tidy-14 --quiet -p "$build_dir" "${extra_args[@]}" \
      --warnings-as-errors='*' >"$log" 2>&1 || status=$?
fi

# run-clang-tidy asks for colours.
sed -i 's/\x1b\[[0-9;]*m//g' "$log"
if grep -qE ': (warning|error):' "$log" || [ "$status" -ne 0 ]; then
  grep -vE '^(clang-tidy|[0-9]+ warnings? (and [0-9]+ errors? )?generated)' "$log" >&2 || true
  echo "clang-tidy: $(grep -cE ': (warning|error):' "$log") findings (all of them in $log)" >&2
  exit 1
fi
echo "clang-tidy: ${#units[@]} translation units, no findings"
[ "$formatted" -eq 1 ]
