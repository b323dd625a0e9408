#!/usr/bin/env bash
# vlfax list --csv of a 10,000-message outbox as a whole process, against
# the same process doing only its start-up, log-on and one cheap call
# (server check), so that the listing's own cost shows. Medians of 7 runs.
#
#   vlfax_bench.sh BIN_DIR LIST_FILE
# LIST_FILE is an out list (MSGDIR.CTL) to list; automation_bench leaves
# one of 10,000 messages. The user's client configuration is pointed at a
# fresh tree for the run.
set -euo pipefail
bin=$(cd "${1:?BIN_DIR}" && pwd)
list=$(realpath "${2:?LIST_FILE}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
wine "$bin/vlsim.exe" --make-tree tree --users BENCH --client-ini >/dev/null 2>&1
cp "$list" tree/USERS/BENCH/V-OUT/MSGDIR.CTL

median() {
  local times=()
  for _ in 1 2 3 4 5 6 7; do
    local start end
    start=$(date +%s%N)
    # Into a file: writes to a character device are slow under Wine.
    wine "$bin/vlfax.exe" --user BENCH "$@" >"$work/output" 2>&1 || true
    end=$(date +%s%N)
    times+=($(((end - start) / 1000000)))
  done
  printf '%s\n' "${times[@]}" | sort -n | sed -n 4p
}
listing=$(median list --csv)
floor=$(median server check)
lines=$(wine "$bin/vlfax.exe" --user BENCH list --csv 2>/dev/null | wc -l)
echo "vlfax list --csv of $((lines - 1)) messages: ${listing} ms per process;" \
  "start-up, log-on and server check: ${floor} ms; the listing's own cost $((listing - floor)) ms"
