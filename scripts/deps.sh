#!/usr/bin/env bash
# Installs what building and testing need, from Debian's packages, when it is missing.
set -euo pipefail

packages=(cmake ninja-build g++ g++-multilib clang libclang-rt-14-dev binutils
          libgtest-dev libbenchmark-dev libsqlite3-dev tzdata pkg-config
          libgmime-3.0-dev libgumbo-dev libxxhash-dev libcpp-httplib-dev nlohmann-json3-dev clang-format-14 clang-tidy-14)
# The search page's test drives a real browser.
packages+=(python3-selenium chromium chromium-driver)
packages+=(googletest qemu-user) # the 32-bit tests: gtest built from source, and run on any kernel
# The Windows builds, and wine to run the 64-bit one's tests.
packages+=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix wine64)
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
    missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
