#!/usr/bin/env bash
# Sets everything up, then runs the benchmarks under Wine with an optimised
# build (build/bench) and prints their figures.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh" >/dev/null
cmake -S "$root" -B "$root/build/bench" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
cmake --build "$root/build/bench" --target msgdir_bench submit_bench outbox_bench >/dev/null
export WINEPREFIX="$root/build/win/wineprefix" WINEDEBUG=-all
"$root/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null
wine "$root/build/bench/bin/msgdir_bench.exe"
wine "$root/build/bench/bin/submit_bench.exe"
wine "$root/build/bench/bin/outbox_bench.exe"
