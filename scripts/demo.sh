#!/usr/bin/env bash
# The first command to run: installs what the build needs, builds the reference host with
# the default preset and runs its demo on generated sample stores of all four mail clients.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh

cmake --preset default >/dev/null
cmake --build --preset default --target mhhost -j "$(nproc)"
exec build/default/bin/mhhost demo "$@"
