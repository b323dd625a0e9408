#!/usr/bin/env bash
# Sets everything up, then runs the whole loop under Wine: the fax server
# simulator makes a sample fax tree and the per-user client configuration
# naming it; the sample client starts the simulator through the library,
# submits a fax to three recipients, follows it until it is sent, prints
# the server's status and stops the simulator.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
export WINEPREFIX="$root/build/win/wineprefix" WINEDEBUG=-all
"$root/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null
mkdir -p "$root/build/win/demo"
cd "$root/build/win/demo"
rm -rf sample-tree
wine "$root/build/win/bin/vlsim.exe" --make-tree sample-tree --client-ini
wine "$root/build/win/bin/sample_client.exe"
# The day's message log, as the simulator recorded the demo message.
wine "$root/build/win/bin/vlsim.exe" --message-log
