#!/bin/bash
# The digest of the four sample stores into one file, in UTC and with a registry file of its
# own beside it. Usage: digest_samples.sh BINDIR SAMPLESDIR OUT
set -eu
bin=$1
samples=$(cd "$2" && pwd)
out=$3
export TZ=UTC0 TUK_REGISTRY="$out.reg"
: >"$out"
for client in eudora internet netscape pegasus; do
  tag=MH${client^}
  "$bin/tuk_digest" "$bin" "$client" "Software\\Tuk\\Agents\\$tag" "$samples/$client" >>"$out"
done
