#!/usr/bin/env bash
# Makes the installer package and the SDK from a Release build:
#   dist/Vlapi64-<version>-x64.msi and dist/Vlapi64-<version>-sdk.zip
# (the version is the one the library reports, from include/vlapi.h).
# Installs what is missing first, as setup.sh does; with VLAPI_NO_INSTALL=1
# it installs nothing. Stops before building anything if a tool is missing.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
[ "${VLAPI_NO_INSTALL:-}" = 1 ] || "$root/scripts/setup.sh" --packages-only

tools=(cmake:cmake ninja:ninja-build x86_64-w64-mingw32-g++:g++-mingw-w64-x86-64
       x86_64-w64-mingw32-widl:mingw-w64-tools wine:wine wixl:wixl wixl-heat:wixl
       msibuild:msitools doxygen:doxygen zip:zip)
for entry in "${tools[@]}"; do
  tool=${entry%%:*}
  command -v "$tool" >/dev/null ||
    { echo "package.sh: $tool is missing (Debian package ${entry#*:}); nothing was built" >&2; exit 1; }
done

build=$root/build/release
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
cmake --build "$build" --target packages
mkdir -p "$root/dist"
cp "$build"/dist/Vlapi64-*-x64.msi "$build"/dist/Vlapi64-*-sdk.zip "$root/dist/"
ls -l "$root"/dist/Vlapi64-*
