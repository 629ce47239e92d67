#!/usr/bin/env bash
# Checks the formatting and runs clang-tidy (scripts/lint.sh), then builds and runs every test:
# the release build, the sanitizer build (ASan and UBSan), a short run of every fuzz target, and
# the 32-bit build of the libraries, whose binary layouts are checked while it compiles.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh

jobs=$(nproc)
echo "== lint"
scripts/lint.sh -j "$jobs"

for preset in default asan; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  ctest --preset "$preset" -j "$jobs"
done

echo "== fuzz"
scripts/fuzz.sh -t 10 -j "$jobs"

echo "== m32"
cmake --preset m32 >/dev/null
cmake --build --preset m32 -j "$jobs"
# Natively, or under qemu-i386 where the kernel runs no 32-bit programs (cmake/Run32Bit.cmake).
ctest --preset m32 -j "$jobs"
