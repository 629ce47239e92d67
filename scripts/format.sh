#!/usr/bin/env bash
# Formats every tracked C and C++ source with clang-format 14 and the root .clang-format.
#
#   scripts/format.sh           rewrites the files in place
#   scripts/format.sh --check   changes nothing; lists the files that are not formatted, exit 1
#
# Only tracked files count: the generated sources land under build/, and no third-party code is
# kept in the tree.
set -euo pipefail
cd "$(dirname "$0")/.."

check=0
case "${1:-}" in
  --check) check=1 ;;
  "") ;;
  -h|--help) sed -n '2,8p' "$0"; exit 0 ;;
  *) echo "unknown option $1" >&2; exit 2 ;;
esac

formatter=clang-format-14
command -v "$formatter" >/dev/null || formatter=clang-format
"$formatter" --version | grep -q 'version 14\.' || {
  echo "clang-format 14 is needed (apt-get install clang-format-14)" >&2
  exit 2
}

mapfile -t files < <(git ls-files -- '*.c' '*.cpp' '*.h')

if [ "$check" -eq 0 ]; then
  printf '%s\0' "${files[@]}" | xargs -0 -n 50 "$formatter" -i --style=file
  exit 0
fi

# One run over every file; it names each unformatted file once per wrong spot.
report=$("$formatter" --dry-run -Werror --style=file "${files[@]}" 2>&1) && exit 0
unformatted=$(sed -n 's/^\(.*\):[0-9]*:[0-9]*: error: code should be clang-formatted.*/\1/p' \
  <<<"$report" | sort -u)
if [ -z "$unformatted" ]; then
  echo "$report" >&2
else
  echo "not formatted (run scripts/format.sh):" >&2
  sed 's/^/  /' <<<"$unformatted" >&2
fi
exit 1
