#!/usr/bin/env bash
# Four script processes send 50 messages each through NewMessage.Send at
# once while the simulator runs: every message must reach a final state,
# no body name may be handed out twice, and the automation server's
# temporary directory must be left empty.
#
#   scripts_send_at_once.sh BIN_DIR
set -uo pipefail
bin=${1:?BIN_DIR}
here=$(cd "$(dirname "$0")" && pwd)
export WINEDEBUG=-all
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
wine "$bin/vlsim.exe" --make-tree "$work/tree" >/dev/null 2>&1 || { echo "cannot make the tree"; exit 1; }
mkdir -p "$work/temp"
tree=$(winepath -w "$work/tree")
temp=$(winepath -w "$work/temp")
(cd "$work" && exec wine "$bin/vlsim.exe" --tree "$tree" --delay 5 --poll 20 >/dev/null 2>&1) &
simulator=$!
for _ in $(seq 100); do [ -f "$work/tree/REQUEST/VELOMAR.LOK" ] && break; sleep 0.1; done

start=$(date +%s)
senders=()
for i in 1 2 3 4; do
  wine cscript //nologo "$(winepath -w "$here/send_many.vbs")" "$tree" "$temp" 50 \
    >"$work/sent$i" 2>&1 &
  senders+=($!)
done
status=0
for pid in "${senders[@]}"; do wait "$pid" || status=1; done
states=$(wine cscript //nologo "$(winepath -w "$here/final_states.vbs")" "$tree" 240 | tr -d '\r')
end=$(date +%s)
kill "$simulator" 2>/dev/null

grep -h "^failed" "$work"/sent* | tr -d '\r' | sort | uniq -c
grep -hv "^failed" "$work"/sent* | tr -d '\r' | sort >"$work/bodies"
sent=$(wc -l <"$work/bodies")
twice=$(uniq -d "$work/bodies" | wc -l)
left=$(ls -A "$work/temp" | wc -l)
echo "sent $sent, names given twice $twice, files left in the temporary directory $left," \
  "$((end - start)) s"
echo "$states"
[ "$status" -eq 0 ] || { echo "a sender failed:"; grep -hv '^[A-Z0-9~]\{1,8\}$' "$work"/sent* | head; exit 1; }
[ "$sent" -eq 200 ] && [ "$twice" -eq 0 ] && [ "$left" -eq 0 ] || {
  for i in 1 2 3 4; do echo "sender $i: $(grep -c . "$work/sent$i") lines, first: $(head -c 200 "$work/sent$i")"; done
  exit 1
}
[ "$(grep -c . <<<"$states")" -ge 1 ] && ! grep -qvE '^status 3[01]: ' <<<"$states" || exit 1
total=$(( $(sed -E "s/.*: //" <<<"$states" | paste -sd+) ))
[ "$total" -eq 200 ] || { echo "the outbox lists $total messages"; exit 1; }
echo "200 passed"
