#!/bin/sh
# Makes the private Wine prefix PREFIX once, and starts a wineserver that
# stays up for a minute after its last client, so that test processes start
# quickly and none of them starts a server of its own.
set -e
prefix=${1:?usage: wine-prefix.sh PREFIX}
export WINEPREFIX="$prefix" WINEDEBUG=-all
if [ ! -f "$prefix/system.reg" ]; then
  mkdir -p "$prefix"
  wine wineboot -i </dev/null >/dev/null 2>&1
  wineserver -w
fi
# The server runs detached from this script's output, which the test runner
# waits on; then wait until its socket exists.
(wineserver -p60 </dev/null >/dev/null 2>&1 &)
id=$(printf 'server-%x-%x' $(stat -c '%d %i' "$prefix"))
# Wine keeps the socket under the temporary directory the environment names.
server_up() {
  for socket in "${TMPDIR:-/tmp}"/wine-*/"$id"/socket /tmp/wine-*/"$id"/socket \
                /tmp/.wine-"$(id -u)"/"$id"/socket; do
    [ -S "$socket" ] && return 0
  done
  return 1
}
tries=0
until server_up; do
  tries=$((tries + 1))
  [ "$tries" -lt 100 ] || { echo "wineserver did not start" >&2; exit 1; }
  sleep 0.1
done
# The first program of a server session starts Wine's own services, which
# keep the output they inherit open: start them here, detached too.
wine cmd /c exit </dev/null >/dev/null 2>&1
echo "wine prefix ready: $prefix"
