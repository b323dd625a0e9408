#!/usr/bin/env bash
# Makes the installer package and the SDK from a Release build, installs,
# repairs, upgrades and removes the package in a fresh Wine prefix (the
# installation test), then copies both into dist/:
#   dist/Vlapi64-<version>-x64.msi and dist/Vlapi64-<version>-sdk.zip
# (the version is the one the library reports, from include/vlapi.h).
# Installs what is missing first, as setup.sh does (VLAPI_NO_INSTALL=1: not),
# and stops before building anything if a tool is still missing.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
if [ "${VLAPI_NO_INSTALL:-}" != 1 ]; then
  "$root/scripts/setup.sh" --packages-only || echo "package.sh: installing packages failed" >&2
fi

tools=(cmake:cmake ninja:ninja-build ctest:cmake x86_64-w64-mingw32-g++:g++-mingw-w64-x86-64
       x86_64-w64-mingw32-windres:binutils-mingw-w64-x86-64 x86_64-w64-mingw32-windmc:binutils-mingw-w64-x86-64
       x86_64-w64-mingw32-widl:mingw-w64-tools wine:wine wineserver:wine winepath:wine
       wixl:wixl wixl-heat:wixl msibuild:msitools msiinfo:msitools doxygen:doxygen zip:zip
       unzip:unzip python3:python3)
for entry in "${tools[@]}"; do
  tool=${entry%%:*}
  command -v "$tool" >/dev/null ||
    { echo "package.sh: $tool is missing (Debian package ${entry#*:}); nothing was built" >&2; exit 1; }
done

build=$root/build/release
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
rm -rf "$build/dist"
cmake --build "$build" --target packages
(cd "$build" && ctest --output-on-failure -R 'installer_package|reference_documents_every_export')
mkdir -p "$root/dist"
cp "$build"/dist/* "$root/dist/"
ls -l "$build"/dist/* | sed "s|$build/dist|dist|"
