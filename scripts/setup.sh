#!/usr/bin/env bash
# Installs what is missing (Debian packages), then configures and builds the
# Windows DLL with its tests and its packages (build/win, build/win/dist), the native sanitizer build of the
# portable core (build/native) and its fuzz targets (build/fuzz, clang with
# libFuzzer), and readies the private Wine prefix. With --packages-only it
# only installs what is missing.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

packages=(wine wine64 wine64-tools g++-mingw-w64-x86-64 mingw-w64-tools
          binutils-mingw-w64-x86-64 cmake ninja-build googletest g++
          clang libclang-rt-dev slapd ldap-utils python3 libwine-dev
          libcli11-dev nlohmann-json3-dev wixl msitools doxygen zip unzip gcovr)
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
    missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get update -qq
  # slapd serves the directory tests from a private configuration of their
  # own: the package must not configure or start a server of the system's.
  echo "slapd slapd/no_configuration boolean true" | $sudo debconf-set-selections
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
fi
[ "${1:-}" != --packages-only ] || exit 0

cmake -S "$root" -B "$root/build/win" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
cmake --build "$root/build/win"
cmake --build "$root/build/win" --target packages
cmake -S "$root" -B "$root/build/native" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DVLAPI_SANITIZE=ON >/dev/null
cmake --build "$root/build/native"
CC=clang CXX=clang++ cmake -S "$root" -B "$root/build/fuzz" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVLAPI_SANITIZE=ON -DVLAPI_FUZZ=ON >/dev/null
cmake --build "$root/build/fuzz"
"$root/scripts/wine-prefix.sh" "$root/build/win/wineprefix"
