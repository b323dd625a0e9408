#!/usr/bin/env bash
# Sets everything up, then runs the whole loop under Wine: the fax server
# simulator makes a sample fax tree and the per-user client configuration
# naming it; the sample client starts the simulator through the library,
# submits a fax to three recipients, follows it until it is sent, prints
# the server's status and stops the simulator; then the VBScript sample does
# the same through the automation server, and vlfax from the command line.
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
# The same loop from a script, through the automation server registered in
# the private prefix, on a fresh tree.
wine regsvr32 /s "$(winepath -w "$root/build/win/bin/Vlapi64.dll")"
rm -rf sample-tree
wine "$root/build/win/bin/vlsim.exe" --make-tree sample-tree --client-ini >/dev/null
wine cscript //nologo "$(winepath -w "$root/samples/sample_client.vbs")"
# And from the command line: vlfax sends a fax and follows it from "Su" to
# "OK", on a fresh tree.
rm -rf sample-tree
wine "$root/build/win/bin/vlsim.exe" --make-tree sample-tree --client-ini >/dev/null
vlfax() { wine "$root/build/win/bin/vlfax.exe" --user JSMITH "$@" </dev/null; }
vlfax server start >/dev/null
vlfax send --to "Ann Archer" --org "Archer & Co" --fax 02015550101 \
  --subject "Quarterly figures" --text "The figures are in." --wait
vlfax server stop
