#!/usr/bin/env bash
# Builds the libFuzzer targets (preset "fuzz": clang, ASan, UBSan) and runs each for a while.
#
#   scripts/fuzz.sh                  every target for 20 s
#   scripts/fuzz.sh -t 600 pairing   one target for ten minutes
#   scripts/fuzz.sh --long           every target for 10 min
#
# Options: -t SECONDS per target; --long (600 s); --build-dir DIR (default build/fuzz, made
# with the preset); --no-build (use what DIR holds); -j JOBS for the build (default 2).
# Each target starts from its seeds in fuzz/corpus/<target> and from what earlier runs kept
# in DIR/corpus/<target>, which it adds to; a crash, a broken property or a hang (one input
# running over 10 s) is written to DIR/artifacts/<target>/ and fails the script. Every run is
# bounded in time and in memory (2 GiB).
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=20
build_dir=build/fuzz
build=1
jobs=2
targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    -t) seconds="$2"; shift 2 ;;
    --long) seconds=600; shift ;;
    --build-dir) build_dir="$2"; shift 2 ;;
    --no-build) build=0; shift ;;
    -j) jobs="$2"; shift 2 ;;
    -h|--help) sed -n '2,13p' "$0"; exit 0 ;;
    -*) echo "unknown option $1" >&2; exit 2 ;;
    *) targets+=("$1"); shift ;;
  esac
done
[ ${#targets[@]} -gt 0 ] || targets=(message_init mail_date framing_eudora framing_internet
                                      framing_netscape framing_pegasus pairing registry ini
                                      reader query)

if [ "$build" -eq 1 ]; then
  if [ "$build_dir" = build/fuzz ]; then
    cmake --preset fuzz >/dev/null
  else
    CC=clang CXX=clang++ cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DTUK_WERROR=ON -DTUK_BUILD_FUZZ=ON -DTUK_BUILD_TESTS=OFF -DTUK_BUILD_HOST=OFF >/dev/null
  fi
  cmake --build "$build_dir" -j "$jobs" --target fuzz_all
fi

# The targets' scratch files, removed however a target ends.
scratch_base=/dev/shm
[ -d "$scratch_base" ] && [ -w "$scratch_base" ] || scratch_base="${TMPDIR:-/tmp}"
export TUK_FUZZ_SCRATCH
TUK_FUZZ_SCRATCH=$(mktemp -d "$scratch_base/tuk-fuzz-run-XXXXXX")
trap 'rm -rf "$TUK_FUZZ_SCRATCH"' EXIT

failed=0
printf '%-18s %12s %10s %8s  %s\n' target executions exec/s corpus result
for target in "${targets[@]}"; do
  binary="$build_dir/bin/fuzz_$target"
  corpus="$build_dir/corpus/$target"
  artifacts="$build_dir/artifacts/$target/"
  log="$build_dir/logs/$target.log"
  mkdir -p "$corpus" "$artifacts" "$(dirname "$log")"
  dict=()
  [ -f "fuzz/dict/$target.dict" ] && dict=(-dict="fuzz/dict/$target.dict")
  status=0
  "$binary" "$corpus" "fuzz/corpus/$target" "${dict[@]}" -max_total_time="$seconds" \
    -rss_limit_mb=2048 -timeout=10 -max_len=65536 -print_final_stats=1 \
    -artifact_prefix="$artifacts" >"$log" 2>&1 || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
  kept=$(find "$corpus" -type f | wc -l)
  result=clean
  if [ "$status" -ne 0 ]; then
    result="FOUND (see $log and $artifacts)"
    failed=1
  fi
  printf '%-18s %12s %10s %8s  %s\n' "$target" "${runs:-?}" "${rate:-?}" "$kept" "$result"
done
exit "$failed"
