#!/usr/bin/env bash
# Line and branch coverage of the code outside tests/ and bench/ by the
# native test suite: a build with gcc's --coverage (build/coverage), every
# native test run once, then gcovr's summary.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/coverage
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_FLAGS=--coverage \
  -DCMAKE_CXX_FLAGS=--coverage -DCMAKE_EXE_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$build" >/dev/null
find "$build" -name '*.gcda' -delete
(cd "$build" && ctest -j2 >"$build/ctest.log" 2>&1) || echo "coverage: some tests failed (see $build/ctest.log)"
gcovr --root "$root" --object-directory "$build" --exclude "$root/tests/" --exclude "$root/bench/" \
  --exclude "$build/" --exclude-directories "$build/CMakeFiles/[0-9].*" --exclude-throw-branches \
  --exclude-unreachable-branches --print-summary --txt "$build/coverage.txt" | tail -n 3
