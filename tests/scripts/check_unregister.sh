#!/usr/bin/env bash
# Unregisters the automation server and checks that its entries are gone
# while HKEY_CLASSES_ROOT\CLSID stays.
#
#   check_unregister.sh DLL_WINDOWS_PATH
set -uo pipefail
export WINEDEBUG=-all
wine regsvr32 /u /s "${1:?DLL}" || { echo "regsvr32 /u failed"; exit 1; }
status=0
for key in 'HKCR\Vlapi32.VlAPI' 'HKCR\Vlapi32.VlAPI.1' \
           'HKCR\CLSID\{F8F6D7F6-F36C-11D4-B863-009027A6FEE2}'; do
  if wine reg query "$key" >/dev/null 2>&1; then
    echo "still registered: $key"
    status=1
  fi
done
wine reg query 'HKCR\CLSID' /ve >/dev/null 2>&1 || { echo "HKCR\\CLSID is gone"; status=1; }
[ $status -eq 0 ] && echo "unregistered; HKCR\\CLSID kept"
exit $status
