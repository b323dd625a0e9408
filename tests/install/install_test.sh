#!/usr/bin/env bash
# The installer package in a fresh private Wine prefix. Installed over a copy
# registered by hand, it leaves one registration, the one regsvr32 writes,
# of the installed library, exactly the SDK's files and its folder appended
# to the system path; the installed VBScript sample sends a fax against the
# installed simulator to "OK" and vlfax runs from the path; installing
# again and a repair leave or restore the registration; an uninstall while
# a client holds the library removes every key; an older build installed
# without the path feature is upgraded, and a rebuild of the same version
# replaces that; the last uninstall leaves no file, key or path entry.
#
#   install_test.sh BUILD_DIR VERSION
set -uo pipefail
build=$(cd "${1:?BUILD_DIR}" && pwd)
version=${2:?VERSION}
older=16.1.1001
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$build/install-test
rm -rf "$work"
mkdir -p "$work"
export WINEPREFIX=$work/prefix WINEDEBUG=-all
"$root/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null || { echo "cannot make a Wine prefix"; exit 1; }
trap 'wineserver -k 2>/dev/null; rm -rf "$work"' EXIT

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
as_by_hand() { diff -u "$work/by-hand" <(registration); }
unregistered() { [ -z "$(registration)" ] && wine reg query 'HKCR\CLSID' >/dev/null 2>&1; }
# The interfaces registered with the type library.
interfaces_are() {
  wine regedit /e "$(winepath -w "$work/interfaces.reg")" 'HKEY_CLASSES_ROOT\Interface'
  local count
  count=$(iconv -f UTF-16 -t UTF-8 "$work/interfaces.reg" |
    grep -c '^@="{F1A35D64-ED5D-11D4-B860-009027A6FEE2}"')
  [ "$count" -eq "$1" ] || { echo "$count interfaces registered"; false; }
}
same_files_as_sdk() {
  diff <(cd "$installed" && find . -type f | LC_ALL=C sort) \
    <(unzip -Z1 "$build/dist/Vlapi64-$version-sdk.zip" | grep -v '/$' |
      sed "s|^Vlapi64-$version-sdk|.|" | LC_ALL=C sort)
}
# The files left in the install folder. Wine's installer leaves the emptied
# folder itself (Windows removes it).
files_left() { (cd "$installed" 2>/dev/null && find . -type f | LC_ALL=C sort | tr '\n' ' '); }
no_files() { [ -z "$(files_left)" ] || { echo "left: $(files_left)"; false; }; }
system_path() {
  wine reg query 'HKLM\System\CurrentControlSet\Control\Session Manager\Environment' /v Path |
    tr -d '\r' | sed -n 's/^ *Path *REG_EXPAND_SZ *//p'
}
path_is() { [ "$(system_path)" = "$1" ] || { echo "Path: $(system_path)"; false; }; }
# Wine's installer leaves the separator of each entry it removed; Windows
# leaves the path as it was.
path_restored() {
  local now
  now=$(system_path)
  [ "${now%"${now##*[!;]}"}" = "${path%"${path##*[!;]}"}" ] || { echo "Path: $now"; false; }
}
# Runs a command line in cmd, where the system path applies.
in_cmd() { wine cmd /c "$*" >"$work/output" 2>&1 </dev/null; }
output_has() { tr -d '\r' <"$work/output" | grep -qE "$1"; }
make_package() {  # VERSION: a package of this build as VERSION, in $work/VERSION
  "$root/packaging/make_packages.sh" "$build" "$1" "$work/$1" "$work/$1/work" >"$work/$1.log" 2>&1 ||
    { cat "$work/$1.log"; false; }
}

path=$(system_path)
# A copy registered by hand; its registration, moved to the installed
# folder, is the one the package must leave.
mkdir -p "$WINEPREFIX/drive_c/manual"
cp "$build/bin/Vlapi64.dll" "$WINEPREFIX/drive_c/manual/"
wine regsvr32 /s 'C:\manual\Vlapi64.dll'
registration | sed 's|C:\\manual|C:\\Program Files\\Vlapi64\\bin|' >"$work/by-hand"
check "install over the copy registered by hand" msiexec /i "$msi"
check "one registration, of the installed library, as regsvr32 writes it" as_by_hand
check "the SDK's files installed" same_files_as_sdk
check "bin appended to the system path" path_is "$path;C:\\Program Files\\Vlapi64\\bin\\"

check "vlsim from the path makes a tree" in_cmd 'vlsim --make-tree C:\faxtree --client-ini'
check "the installed VBScript sample sends to OK" eval \
  "wine cscript //nologo 'C:\\Program Files\\Vlapi64\\samples\\sample_client.vbs' >'$work/output' 2>&1 && output_has 'reached OK'"
check "vlfax server start from the path" in_cmd vlfax --user JSMITH server start
check "vlfax server status from the path" eval \
  "in_cmd vlfax --user JSMITH server status && output_has '^Coversheets \\(2\\): STANDARD URGENT'"
in_cmd vlfax --user JSMITH server stop

check "install the same package again" msiexec /i "$msi"
check "installing again keeps the registration" as_by_hand
wine reg delete "HKCR\\CLSID\\$clsid\\InprocServer32" /f >/dev/null
check "repair" msiexec /i "$msi" REINSTALL=ALL REINSTALLMODE=m
check "the repair restores the deleted key" as_by_hand

# Uninstalled while a client holds the library loaded: the keys go, and the
# files in use are left for the next restart. Windows says so (3010); Wine
# answers 0 and leaves them without scheduling anything, so the test
# removes them as the restart would.
wine 'C:\Program Files\Vlapi64\bin\vlfax.exe' --user JSMITH watch --timeout 8 >/dev/null 2>&1 </dev/null &
watcher=$!
sleep 3
check "the client holds the library" kill -0 "$watcher"
msiexec /x "$msi"
code=$?
check "uninstall in use: exit $code is 0 or 3010" [ "$code" -eq 0 -o "$code" -eq 3010 ]
check "uninstall in use: no key left" unregistered
check "uninstall in use: only the files in use are left" \
  eval '[[ "$(files_left)" =~ ^(\./bin/Vlapi64\.dll\ |\./bin/vlfax\.exe\ )*$ ]] || no_files'
check "uninstall in use: the client ran on" wait "$watcher"
rm -f "$installed/bin/Vlapi64.dll" "$installed/bin/vlfax.exe"
check "uninstall: path restored" path_restored

# An older build installed without the path feature, upgraded, then
# replaced by a rebuild of this version, whose uninstall leaves nothing.
check "make an older build" make_package $older
check "install the older build without the path feature" \
  msiexec /i "$(winepath -w "$work/$older/Vlapi64-$older-x64.msi")" ADDLOCAL=Complete
check "without the path feature the path is left alone" path_restored
check "upgrade" msiexec /i "$msi"
check "the upgrade registers the installed library" as_by_hand
check "the upgrade registers the 28 interfaces" interfaces_are 28
check "make a rebuild of this version" make_package "$version"
rebuild=$(winepath -w "$work/$version/Vlapi64-$version-x64.msi")
check "install a rebuild of this version" msiexec /i "$rebuild"
check "uninstall the rebuild" msiexec /x "$rebuild"
check "nothing of the package left: files" no_files
check "nothing of the package left: keys" unregistered
check "nothing of the package left: interfaces" interfaces_are 0
check "nothing of the package left: path" path_restored

echo "$((checks - failures)) passed, $failures failed"
[ "$failures" -eq 0 ]
