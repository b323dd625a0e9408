#!/usr/bin/env bash
# The package command with wixl missing from the path: one clear line, a
# failure, and nothing built (a cmake that records being called stands in
# for the real one).
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
bin=$(mktemp -d)
trap 'rm -rf "$bin"' EXIT
for tool in bash ninja ctest x86_64-w64-mingw32-g++ x86_64-w64-mingw32-windres \
  x86_64-w64-mingw32-windmc x86_64-w64-mingw32-widl wine wineserver winepath wixl-heat msibuild \
  msiinfo doxygen zip unzip python3 dirname; do
  ln -s "$(command -v "$tool")" "$bin/$tool"
done
printf '#!/bin/sh\ntouch "%s/cmake-was-called"\n' "$bin" >"$bin/cmake"
chmod +x "$bin/cmake"
output=$(PATH=$bin VLAPI_NO_INSTALL=1 bash "$root/scripts/package.sh" 2>&1)
code=$?
expected="package.sh: wixl is missing (Debian package wixl); nothing was built"
if [ "$code" -ne 0 ] && [ "$output" = "$expected" ] && [ ! -e "$bin/cmake-was-called" ]; then
  echo "1 passed, 0 failed"
  exit 0
fi
echo "FAILED: exit $code, cmake called: $([ -e "$bin/cmake-was-called" ] && echo yes || echo no), output: $output"
echo "0 passed, 1 failed"
exit 1
