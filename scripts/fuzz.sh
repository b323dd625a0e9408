#!/usr/bin/env bash
# Runs one fuzz target for a bounded time:
#   scripts/fuzz.sh [--fresh] TARGET SECONDS [libFuzzer options...]
# TARGET is a name of tests/fuzz (paragraph, msg_list, submit_file,
# control_file, status, config). New inputs gather in
# build/fuzz/campaign/TARGET/corpus and findings in .../findings, both kept
# between runs; the seeds in tests/fuzz/corpus/TARGET are only read. With
# --fresh (as the test command runs it) the run starts from the seeds alone
# in build/fuzz/fresh/TARGET, so its outcome does not hang on earlier runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

binary=""
fresh=""
while [ $# -gt 0 ]; do
  case "$1" in
    --binary) binary=$2; shift 2 ;;
    --fresh) fresh=1; shift ;;
    *) break ;;
  esac
done
if [ $# -lt 2 ]; then
  echo "usage: scripts/fuzz.sh TARGET SECONDS [libFuzzer options...]" >&2
  exit 2
fi
target=$1
seconds=$2
shift 2
if [ ! -f "$root/tests/fuzz/${target}_fuzz.cpp" ]; then
  echo "no fuzz target '$target'; there are:" \
       $(cd "$root/tests/fuzz" && ls *_fuzz.cpp | sed 's/_fuzz\.cpp$//') >&2
  exit 2
fi
if [ -z "$binary" ]; then
  [ -f "$root/build/fuzz/CMakeCache.txt" ] || "$root/scripts/setup.sh"
  cmake --build "$root/build/fuzz" --target "fuzz_$target" >/dev/null
  binary=$root/build/fuzz/bin/fuzz_$target
fi

work=$root/build/fuzz/campaign/$target
if [ -n "$fresh" ]; then
  work=$root/build/fuzz/fresh/$target
  rm -rf "$work"
fi
mkdir -p "$work/corpus" "$work/findings"
exec "$binary" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 \
  -dict="$root/tests/fuzz/$target.dict" -artifact_prefix="$work/findings/" \
  -print_final_stats=1 "$@" "$work/corpus" "$root/tests/fuzz/corpus/$target"
