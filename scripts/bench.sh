#!/usr/bin/env bash
# Sets everything up, then runs the benchmarks under Wine with an optimised
# build (build/bench) and prints their figures.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh" >/dev/null
cmake -S "$root" -B "$root/build/bench" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
cmake --build "$root/build/bench" --target msgdir_bench submit_bench outbox_bench automation_bench Vlapi64 >/dev/null
export WINEPREFIX="$root/build/win/wineprefix" WINEDEBUG=-all
"$root/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null
wine "$root/build/bench/bin/msgdir_bench.exe"
wine "$root/build/bench/bin/submit_bench.exe"
wine "$root/build/bench/bin/outbox_bench.exe"
# The automation objects, then the same outbox listed from VBScript through
# the registered server of this build.
autobench="$root/build/bench/autobench"
wine "$root/build/bench/bin/automation_bench.exe" "$(winepath -w "$autobench")"
wine regsvr32 /s "$(winepath -w "$root/build/bench/bin/Vlapi64.dll")"
wine cscript //nologo "$(winepath -w "$root/bench/outbox_listing.vbs")" "$(winepath -w "$autobench")"
# vlfax listing that outbox, against its own start-up and log-on.
cmake --build "$root/build/bench" --target vlfax vlsim >/dev/null
"$root/bench/vlfax_bench.sh" "$root/build/bench/bin" "$root/build/bench/autobench/USERS/BENCH/V-OUT/MSGDIR.CTL"
