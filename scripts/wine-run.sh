#!/usr/bin/env bash
# Runs a Windows program of the build under wine, headless: wine-run.sh PREFIX PROGRAM ARGS...
#
# PREFIX is the build's own wine prefix, made on first use, with no graphics driver (windows
# and dialogs work, nothing is drawn). Programs in one prefix run one at a time, and each ends
# the wine server and the system processes it started: left running, they would hold the
# caller's output open (CTest waits for it) and carry one program's state into the next.
set -euo pipefail
prefix=$(realpath -m "$1")
shift
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" TZ=${TZ:-UTC0}
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=$(command -v wine64 || command -v wine)
server=/usr/lib/wine/wineserver
[ -x "$server" ] || server=$(command -v wineserver)

mkdir -p "$prefix"
exec 9>"$prefix.lock"
flock 9
if [ ! -f "$prefix/.tuk-ready" ]; then
  "$wine" wineboot --init </dev/null >/dev/null 2>&1 9>&- || true
  "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f </dev/null >/dev/null 2>&1 9>&-
  touch "$prefix/.tuk-ready"
fi
# The server and the services come up before the program, away from its output.
"$server" -p60 </dev/null >/dev/null 2>&1 9>&- || true
"$wine" wineboot </dev/null >/dev/null 2>&1 9>&- || true
status=0
"$wine" "$@" 9>&- || status=$?
"$server" -k 2>/dev/null 9>&- || true
"$server" -w 2>/dev/null 9>&- || true
exit "$status"
