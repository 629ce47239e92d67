#!/bin/bash
# Compares two digests of tuk_digest record for record, whatever order each walk took.
# Allowed: another case in a path's extension (the Windows walk may lower-case it), and a time
# of -1 on one side only, which is what a 32-bit time_t gives past 2038. Prints each record
# that differs; fails on any, and when either digest is empty. Usage: compare_digests.sh A B
set -u
[ -s "$1" ] && [ -s "$2" ] || { echo "compare_digests: an empty digest: $1 or $2"; exit 1; }
normalised() {
  LC_ALL=C awk -F '\t' -v OFS='\t' '
    function lowerExtension(path,   dot) {
      dot = match(path, /\.[^.\/]*$/)
      return dot ? substr(path, 1, dot - 1) tolower(substr(path, dot)) : path
    }
    $3 ~ /^size=/ {
      $2 = lowerExtension($2)
      for (i = 12; i <= NF; i++)
        if ($i ~ /^location=/) $i = lowerExtension($i)
    }
    { print }' "$1" | LC_ALL=C sort
}
LC_ALL=C awk -F '\t' '
  # A record is known by its client, mailbox and offset; a second one alike is another record.
  function key(line,   f, k) {
    split(line, f, "\t")
    k = f[3] ~ /^size=/ ? f[1] "\t" f[2] "\t" f[5] : line
    return k "\t" (++seen[FNR == NR, k])
  }
  function sameTime(a, b) { sub(/^[a-z]+=/, "", a); sub(/^[a-z]+=/, "", b); return a == b || a == -1 || b == -1 }
  function same(a, b,   fa, fb, n, i) {
    if (a == b) return 1
    n = split(a, fa, "\t")
    if (n != split(b, fb, "\t")) return 0
    for (i = 1; i <= n; i++)
      if (fa[i] != fb[i] && !((i == 9 || i == 11) && sameTime(fa[i], fb[i]))) return 0
    return 1
  }
  FNR == NR { first[key($0)] = $0; next }
  {
    k = key($0)
    if (!(k in first)) { print "+ " $0; differ++ }
    else if (!same(first[k], $0)) { print "- " first[k]; print "+ " $0; differ++ }
    delete first[k]
  }
  END {
    for (k in first) { print "- " first[k]; differ++ }
    if (differ) print differ " records differ"
    exit differ > 0
  }' <(normalised "$1") <(normalised "$2")
