#!/usr/bin/env bash
# dll_exports.sh OBJDUMP DLL: the DLL exports initAgent and nothing else.
set -euo pipefail
exports=$("$1" -p "$2" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' |
          sed -n 's/^[[:space:]]*\[[[:space:]]*[0-9]*\] //p')
echo "exports of $2: ${exports:-none}"
[ "$exports" = initAgent ]
