#!/usr/bin/env bash
# Sets everything up, then runs the sample client under Wine: it creates a
# sample fax tree under build/win/demo, logs a user on and prints the
# library's version and the session's directories.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
export WINEPREFIX="$root/build/win/wineprefix" WINEDEBUG=-all
mkdir -p "$root/build/win/demo"
cd "$root/build/win/demo"
wine "$root/build/win/bin/sample_client.exe" sample-tree
