#!/bin/bash
# No include runs upward. The layers, lowest first: include/ and resources/, platform/, cmn/,
# store/, clients/, agent/ with settings/ (one layer: the settings are the agent's members),
# host/. A file may include its own layer and those below; tests, benchmarks, fuzz targets
# and tools may include any. Prints every include that runs upward and fails if there is one.
set -u
root="${1:-$(dirname "$0")/../..}"
declare -A layer=([include]=0 [resources]=0 [platform]=1 [cmn]=2 [store]=3 [clients]=4
                  [agent]=5 [settings]=5 [host]=6)
upward=0
for top in "${!layer[@]}"; do
  [ -d "$root/$top" ] || continue
  while IFS=: read -r file line text; do
    included=$(sed -E 's/^[[:space:]]*#[[:space:]]*include[[:space:]]+"([^"]+)".*/\1/' <<<"$text")
    first=${included%%/*}
    if [ -n "${layer[$first]+set}" ] && [ "${layer[$first]}" -gt "${layer[$top]}" ]; then
      echo "${file#"$root"/}:$line includes $included, a layer above"
      upward=$((upward + 1))
    fi
  done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]+"' "$root/$top" \
             --include='*.h' --include='*.cpp' --include='*.c' --include='*.rc' --include='*.inc')
done
[ "$upward" -eq 0 ] && echo "no include runs upward"
exit $((upward > 0))
