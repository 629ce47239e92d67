#!/usr/bin/env bash
# Checks the formatting and runs clang-tidy (scripts/lint.sh), then builds and runs every test:
# the release build, the sanitizer build (ASan and UBSan), a short run of every fuzz target, the
# 32-bit build (natively or under qemu-i386), the 64-bit Windows build under wine, and the
# 32-bit Windows build, which cannot run here and whose binary layouts are checked as it compiles.
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

echo "== win64"
cmake --preset win64 >/dev/null
cmake --build --preset win64 -j "$jobs"
# A fresh wine prefix for each run: nothing of an earlier run's registry reaches this one.
rm -rf build/win64/wineprefix build/win64/wineprefix-digest
ctest --preset win64
/usr/lib/wine/wineserver -k 2>/dev/null || true

echo "== win32"
cmake --preset win32 >/dev/null
cmake --build --preset win32 -j "$jobs"
echo "32-bit Windows build: layouts checked"
