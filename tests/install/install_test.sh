#!/usr/bin/env bash
# The installer package in a fresh private Wine prefix: installed over a copy
# registered by hand, it leaves one registration (compared whole with
# registry.expected) and exactly the SDK's files; the installed VBScript
# sample sends a fax against the installed simulator to "OK"; vlfax runs
# from the system path; installing again and a repair restore a deleted
# key; an uninstall while a client holds the library leaves no key; an
# older build is replaced by an upgrade; the last uninstall leaves no file,
# no key and no path entry.
#
#   install_test.sh BUILD_DIR VERSION
# VLAPI_UPDATE_EXPECTED=1 rewrites registry.expected.
set -uo pipefail
build=$(cd "${1:?BUILD_DIR}" && pwd)
version=${2:?VERSION}
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
work=$build/install-test
rm -rf "$work"
mkdir -p "$work"
export WINEPREFIX=$work/prefix WINEDEBUG=-all
"$root/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null || { echo "cannot make a Wine prefix"; exit 1; }
trap 'WINEPREFIX=$work/prefix wineserver -k 2>/dev/null; rm -rf "$work" "$build/package-16.1.1001"' EXIT

msi=$(winepath -w "$build/dist/Vlapi64-$version-x64.msi")
installed="$WINEPREFIX/drive_c/Program Files/Vlapi64"
failures=0
checks=0
check() {
  local what=$1
  shift
  checks=$((checks + 1))
  "$@" || { echo "FAILED: $what"; failures=$((failures + 1)); }
}
msiexec() { wine msiexec "$@" /qn; }
clsid='{F8F6D7F6-F36C-11D4-B863-009027A6FEE2}'
# The package's keys below HKEY_CLASSES_ROOT as reg prints them.
registration() {
  for key in Vlapi32.VlAPI Vlapi32.VlAPI.1 "CLSID\\$clsid" 'TypeLib\{F1A35D64-ED5D-11D4-B860-009027A6FEE2}' \
    'Interface\{27702C4B-FDB6-11D4-B866-009027A6FEE2}'; do
    wine reg query "HKCR\\$key" /s 2>/dev/null
  done | tr -d '\r' | grep -v '^reg: Unable to find'
}
registered_as_expected() {
  [ "${VLAPI_UPDATE_EXPECTED:-}" != 1 ] || registration >"$here/registry.expected"
  diff -u "$here/registry.expected" <(registration)
}
unregistered() {
  local left
  left=$(registration)
  [ -z "$left" ] || { echo "$left" | head -5; return 1; }
  wine reg query 'HKCR\CLSID' >/dev/null 2>&1
}
# Interfaces of the type library registered: 28 when installed, none after.
interfaces() {
  wine regedit /e "$(winepath -w "$work/interfaces.reg")" 'HKEY_CLASSES_ROOT\Interface'
  iconv -f UTF-16 -t UTF-8 "$work/interfaces.reg" | grep -c '^@="{F1A35D64-ED5D-11D4-B860-009027A6FEE2}"'
}
same_files_as_sdk() {
  diff <(cd "$installed" && find . -type f | LC_ALL=C sort) \
    <(unzip -Z1 "$build/dist/Vlapi64-$version-sdk.zip" | grep -v '/$' |
      sed "s|^Vlapi64-$version-sdk|.|" | LC_ALL=C sort)
}
# Wine's installer leaves the emptied install folder, which the package's
# RemoveFile row asks to remove (Windows does); no file may be left in it.
no_files() { [ -z "$(find "$installed" -type f 2>/dev/null | tee /dev/stderr)" ]; }
path_clean() { ! wine reg query 'HKLM\System\CurrentControlSet\Control\Session Manager\Environment' /v Path | grep -q Vlapi64; }
on_path() { wine reg query 'HKLM\System\CurrentControlSet\Control\Session Manager\Environment' /v Path | grep -q 'Vlapi64\\bin'; }
# Runs a command line in cmd, where the system path applies.
in_cmd() { wine cmd /c "$*" >"$work/output" 2>&1 </dev/null; }
output_has() { tr -d '\r' <"$work/output" | grep -qE "$1"; }

# A copy registered by hand, then the package installed over it.
mkdir -p "$WINEPREFIX/drive_c/manual"
cp "$build/bin/Vlapi64.dll" "$WINEPREFIX/drive_c/manual/"
wine regsvr32 /s 'C:\manual\Vlapi64.dll'
check "install" msiexec /i "$msi"
check "one registration, of the installed library" registered_as_expected
check "28 interfaces registered" [ "$(interfaces)" -eq 28 ]
check "the SDK's files installed" same_files_as_sdk
check "bin on the system path" on_path

# The installed sample against the installed simulator; vlfax from the path.
check "vlsim from the path makes a tree" in_cmd 'vlsim --make-tree C:\faxtree --client-ini'
check "the VBScript sample sends to OK" eval "wine cscript //nologo 'C:\\Program Files\\Vlapi64\\samples\\sample_client.vbs' >'$work/output' 2>&1 && output_has 'reached OK'"
check "vlfax server start from the path" in_cmd vlfax --user JSMITH server start
check "vlfax server status from the path" eval "in_cmd vlfax --user JSMITH server status && output_has '^Coversheets \\(2\\): STANDARD URGENT'"
in_cmd vlfax --user JSMITH server stop

# Installed again, and repaired, each after a key was deleted.
for way in "/i $msi" "/i $msi REINSTALL=ALL REINSTALLMODE=m"; do
  wine reg delete "HKCR\\CLSID\\$clsid\\InprocServer32" /f >/dev/null
  check "msiexec $way" msiexec $way
  check "msiexec $way restores the deleted key" registered_as_expected
done

# Uninstalled while a client holds the library loaded.
wine "C:\\Program Files\\Vlapi64\\bin\\vlfax.exe" --user JSMITH watch --timeout 5 >/dev/null 2>&1 </dev/null &
watcher=$!
sleep 2
msiexec /x "$msi"
code=$?
check "uninstall in use: done (0) or done at restart (3010), not $code" [ "$code" -eq 0 -o "$code" -eq 3010 ]
check "uninstall in use: no key left" unregistered
wait "$watcher"
check "no interface left" [ "$(interfaces)" -eq 0 ]

# An older build replaced by this one: its uninstall then leaves nothing.
"$root/packaging/make_packages.sh" "$build" 16.1.1001 "$work/old" >/dev/null 2>&1
check "install an older build" msiexec /i "$(winepath -w "$work/old/Vlapi64-16.1.1001-x64.msi")"
check "upgrade" msiexec /i "$msi"
check "the upgrade registers the installed library" registered_as_expected
check "uninstall" msiexec /x "$msi"
check "nothing of the package left: files" no_files
check "nothing of the package left: keys" unregistered
check "nothing of the package left: path" path_clean

echo "$((checks - failures)) passed, $failures failed"
[ "$failures" -eq 0 ]
