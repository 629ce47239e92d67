#!/bin/bash
# The digest of the four sample stores into one file, in UTC and with a registry file of its
# own beside it. Usage: digest_samples.sh BINDIR SAMPLESDIR OUT [RUNNER...]
# With a RUNNER (scripts/wine-run.sh and its prefix), the Windows build's tuk_digest.exe runs
# under it, and the folders are given to it as wine shows them (drive Z:).
set -eu
bin=$1
samples=$(cd "$2" && pwd)
out=$3
shift 3
runner=("$@")
program=$bin/tuk_digest
if [ ${#runner[@]} -gt 0 ]; then
  program=$bin/tuk_digest.exe
  bin=Z:$bin
  samples=Z:$samples
fi
export TZ=UTC0 TUK_REGISTRY="$out.reg"
: >"$out"
for client in eudora internet netscape pegasus; do
  tag=MH${client^}
  "${runner[@]}" "$program" "$bin" "$client" "Software\\Tuk\\Agents\\$tag" "$samples/$client" >>"$out"
done
