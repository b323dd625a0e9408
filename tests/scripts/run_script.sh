#!/usr/bin/env bash
# Runs one script client of the automation server under Wine and compares
# its whole output with the expected lines.
#
#   run_script.sh BIN_DIR SCRIPT EXPECTED
#
# A fresh sample fax tree (users JSMITH and AJONES) is made for the script,
# whose path is the script's first argument; in the output it reads TREE.
# A script whose first line contains "needs: simulator" runs while the fax
# server simulator serves that tree; the script stops it (Server.Stop), or
# it is ended here. The server must be registered in the prefix already.
# With VLAPI_UPDATE_EXPECTED=1 the output becomes the expected lines.
set -uo pipefail
bin=${1:?BIN_DIR}
script=${2:?SCRIPT}
expected=${3:?EXPECTED}
export WINEDEBUG=-all
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

wine "$bin/vlsim.exe" --make-tree "$work/tree" --users JSMITH,AJONES >/dev/null 2>&1 ||
  { echo "cannot make the fax tree"; exit 1; }
tree=$(winepath -w "$work/tree")

simulator=
if head -n 1 "$script" | grep -q "needs: simulator"; then
  (cd "$work" && exec wine "$bin/vlsim.exe" --tree "$tree" --delay 50 --poll 20 \
     >"$work/vlsim.out" 2>&1) &
  simulator=$!
  for _ in $(seq 100); do
    [ -f "$work/tree/REQUEST/VELOMAR.LOK" ] && break
    sleep 0.1
  done
fi

(cd "$work" && wine cscript //nologo "$(winepath -w "$script")" "$tree") >"$work/out" 2>&1
status=$?

if [ -n "$simulator" ]; then
  for _ in $(seq 50); do kill -0 "$simulator" 2>/dev/null || break; sleep 0.1; done
  kill "$simulator" 2>/dev/null && echo "(the simulator was still running)" >>"$work/out"
fi

# The tree's path, as the script may print it, and line ends made plain.
sed -e "s|$(printf '%s' "$tree" | sed 's/[\\.&|]/\\&/g')|TREE|g" -e 's/\r$//' "$work/out" >"$work/actual"
[ "${VLAPI_UPDATE_EXPECTED:-0}" = 1 ] && cp "$work/actual" "$expected"
if ! diff -u "$expected" "$work/actual"; then
  echo "FAILED: output of $(basename "$script") differs (cscript exit $status)"
  exit 1
fi
echo "$(basename "$script"): output as expected"
