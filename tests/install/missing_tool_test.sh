#!/usr/bin/env bash
# The package command with wixl missing from the path: one clear line, a
# failure, and no build started.
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
bin=$(mktemp -d)
trap 'rm -rf "$bin"' EXIT
# A path of every tool but wixl.
for tool in bash cmake ninja x86_64-w64-mingw32-g++ x86_64-w64-mingw32-widl wine wixl-heat \
  msibuild doxygen zip dirname; do
  ln -s "$(command -v "$tool")" "$bin/$tool"
done
before=$(ls -d "$root/build/release" 2>/dev/null)
output=$(PATH=$bin VLAPI_NO_INSTALL=1 bash "$root/scripts/package.sh" 2>&1)
code=$?
expected="package.sh: wixl is missing (Debian package wixl); nothing was built"
[ "$code" -ne 0 ] && [ "$output" = "$expected" ] && [ "$(ls -d "$root/build/release" 2>/dev/null)" = "$before" ] &&
  { echo "1 passed, 0 failed"; exit 0; }
echo "FAILED: exit $code, output: $output"
echo "0 passed, 1 failed"
exit 1
