#!/usr/bin/env bash
# Sets everything up, then runs all tests: the Windows build under Wine, the
# native build under AddressSanitizer and UBSan, and the fuzz targets (every
# seed replayed, then a short bounded run each). Ends with one line
# "N passed, N failed".
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh" || exit 1

passed=0
failed=0
skipped=0
status=0
for build in win native fuzz; do
  echo "=== tests of build/$build"
  log=$(mktemp)
  (cd "$root/build/$build" && ctest -j2 --output-on-failure) 2>&1 | tee "$log"
  [ "${PIPESTATUS[0]}" -eq 0 ] || status=1
  summary=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)
  skips=$(grep -cE '^[[:space:]]+[0-9]+ - .*\(Skipped\)$' "$log" || true)
  rm -f "$log"
  if [ -z "$summary" ]; then
    status=1
    continue
  fi
  total=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<<"$summary")
  bad=$(sed -E 's/.*passed, ([0-9]+) tests? failed.*/\1/' <<<"$summary")
  passed=$((passed + total - bad - skips))
  failed=$((failed + bad))
  skipped=$((skipped + skips))
done
echo "${passed} passed, ${failed} failed, ${skipped} skipped"
exit $status
