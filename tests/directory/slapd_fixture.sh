#!/usr/bin/env bash
# Starts or stops a private OpenLDAP server for the directory tests:
#   slapd_fixture.sh start DIR   configuration, database and schema under DIR,
#                                listening on 127.0.0.1 at a free port, which
#                                it writes to DIR/port
#                                and a silent server that accepts connections
#                                and never answers, its port in DIR/silent-port
#   slapd_fixture.sh stop DIR    ends both servers and removes DIR
# Without slapd the start writes the reason to DIR/skip and succeeds, so that
# the tests that need the server skip with that reason.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
action=$1
dir=$2

stop() {
  [ -f "$dir/silent.pid" ] && kill "$(cat "$dir/silent.pid")" 2>/dev/null
  if [ -f "$dir/slapd.pid" ]; then
    pid=$(cat "$dir/slapd.pid")
    kill "$pid" 2>/dev/null
    for _ in $(seq 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
    kill -9 "$pid" 2>/dev/null
  fi
  rm -rf "$dir"
}

skip() {
  echo "$1" > "$dir/skip"
  echo "directory tests will be skipped: $1"
  exit 0
}

if [ "$action" = stop ]; then
  stop
  exit 0
fi

stop
mkdir -p "$dir/db"
slapd=$(command -v slapd || ls /usr/sbin/slapd 2>/dev/null)
[ -n "$slapd" ] || skip "slapd is not installed (Debian package slapd)"
command -v ldapadd >/dev/null || skip "ldapadd is not installed (Debian package ldap-utils)"

port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
suffix="dc=velomar,dc=test"
cat > "$dir/rootdse.ldif" <<LDIF
dn:
defaultNamingContext: $suffix
LDIF
cat > "$dir/slapd.conf" <<CONF
include /etc/ldap/schema/core.schema
include $here/velomar.schema
pidfile $dir/slapd.pid
argsfile $dir/slapd.args
modulepath /usr/lib/ldap
moduleload back_mdb
rootDSE $dir/rootdse.ldif
database mdb
maxsize 16777216
suffix "$suffix"
rootdn "cn=admin,$suffix"
rootpw admin
directory $dir/db
access to * by * read
CONF
"$slapd" -f "$dir/slapd.conf" -h "ldap://127.0.0.1:$port/" 2> "$dir/slapd.err" ||
  skip "slapd did not start: $(tail -1 "$dir/slapd.err")"
for _ in $(seq 50); do
  ldapsearch -x -H "ldap://127.0.0.1:$port/" -s base -b "" >/dev/null 2>&1 && break
  sleep 0.1
done
ldapadd -x -H "ldap://127.0.0.1:$port/" -D "cn=admin,$suffix" -w admin -f "$here/tree.ldif" \
  > "$dir/ldapadd.log" 2>&1 || { cat "$dir/ldapadd.log"; stop; exit 1; }
echo "$port" > "$dir/port"
python3 -c '
import socket, sys
server = socket.socket()
server.bind(("127.0.0.1", 0))
server.listen(16)
open(sys.argv[1], "w").write(str(server.getsockname()[1]))
held = []
while True:
    held.append(server.accept()[0])
' "$dir/silent-port" > /dev/null 2>&1 &
echo $! > "$dir/silent.pid"
for _ in $(seq 50); do [ -s "$dir/silent-port" ] && break; sleep 0.1; done
echo "slapd listens on 127.0.0.1:$port"
