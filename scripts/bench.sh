#!/usr/bin/env bash
# Builds the bench preset (Release) and runs the kernel benchmarks, then the whole-store
# benchmark: cat, the agent's walk, the walk with every object read, and mhhost index.
#
#   scripts/bench.sh            short: stores of 32 MB and 10,000 messages (a few minutes)
#   scripts/bench.sh --full     the README's figures: 256 MB and 100,000 messages
#   scripts/bench.sh --peer     mhhost beside mairix on 100,000 real-shaped messages: index,
#                               rerun, searches, memory, index size, a grown mailbox
#                               (further arguments go to peer_bench, see its --help)
#
# Further arguments go to store_bench (see build/bench/bin/store_bench --help), e.g.
# --clients eudora,netscape, --repeat 5, or --first-read cat to have cat, not the agent,
# read each store first from disk (the page cache then holds it in small pieces). The machine's load average is printed at the
# start and the end of the store runs: figures taken beside other work are not comparable.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh

full=0
if [ "${1:-}" = "--full" ]; then
  full=1
  shift
fi

jobs=$(nproc)
cmake --preset bench >/dev/null
bin=build/bench/bin

if [ "${1:-}" = "--peer" ]; then
  shift
  # The peer is measured beside the host, so it is installed when missing.
  if ! command -v mairix >/dev/null; then
    echo "Installing: mairix"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq mairix >/dev/null
  fi
  cmake --build --preset bench -j "$jobs" --target peer_bench store_bench tuk_mhmail mhhost
  exec "$bin/peer_bench" "$@"
fi

cmake --build --preset bench -j "$jobs" --target kernel_bench store_bench tuk_mhmail
# The reference host is measured when it builds; store_bench reports it missing otherwise.
if ! cmake --build --preset bench -j "$jobs" --target mhhost >/dev/null 2>&1; then
  echo "bench: mhhost does not build; its rows are left out" >&2
fi

if [ "$full" = 1 ]; then
  "$bin/kernel_bench" --benchmark_min_time=1
  "$bin/store_bench" --size 256 --messages 100000 --slow-repeat 2 "$@"
else
  "$bin/kernel_bench" --benchmark_min_time=0.1
  "$bin/store_bench" --size 32 --messages 10000 --repeat 2 "$@"
fi
