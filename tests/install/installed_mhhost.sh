#!/usr/bin/env bash
# Installs the build into a new prefix and runs the installed mhhost as a person would: its
# version, its agent and language module found in lib/tuk, the demo, the man page.
#   installed_mhhost.sh BUILD_DIR
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
mhhost="$prefix/bin/mhhost"
"$mhhost" --version | grep -q '^mhhost [0-9]'
"$mhhost" --language DE --db "$prefix/index.db" status | grep -q 'not made yet'
demo=$("$mhhost" demo --dir "$prefix/demo")
grep -q 'Grüße vom Gipfel' <<<"$demo"
test -f "$prefix/share/man/man1/mhhost.1"
test -f "$prefix/share/bash-completion/completions/mhhost"
bash -c "source '$prefix/share/bash-completion/completions/mhhost' && complete -p mhhost" >/dev/null
echo "installed mhhost runs from $prefix"
