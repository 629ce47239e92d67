#!/usr/bin/env bash
# Runs a Windows program of the build under wine, headless: wine-run.sh PREFIX PROGRAM ARGS...
#
# PREFIX is the build's own wine prefix, made on first use: no graphics driver (windows and
# dialogs work, nothing is drawn), and a wineserver that outlives each program for a while, so
# that a test program does not wait for the server to shut down when it exits.
set -euo pipefail
prefix=$(realpath -m "$1")
shift
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" TZ=${TZ:-UTC0}
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=$(command -v wine64 || command -v wine)
server=/usr/lib/wine/wineserver
[ -x "$server" ] || server=$(command -v wineserver)

mkdir -p "$prefix"
(
  flock 9
  if [ ! -f "$prefix/.tuk-ready" ]; then
    "$wine" wineboot --init </dev/null >/dev/null 2>&1 9>&- || true
    "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f \
      </dev/null >/dev/null 2>&1 9>&-
    touch "$prefix/.tuk-ready"
  fi
  # The server must not keep the lock, nor the caller's output, open while it lives on.
  "$server" -p 60 </dev/null >/dev/null 2>&1 9>&- || true
) 9>"$prefix.lock"
exec "$wine" "$@"
