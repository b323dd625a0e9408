#!/usr/bin/env bash
# Makes the installer package and the SDK zip from a Windows build:
#   make_packages.sh BUILD_DIR VERSION OUT_DIR [WORK_DIR]
# gives OUT_DIR/Vlapi64-VERSION-x64.msi and OUT_DIR/Vlapi64-VERSION-sdk.zip;
# the staged tree and the reference's HTML and XML stay in WORK_DIR
# (default BUILD_DIR/package-VERSION).
# Both hold the same staged tree: bin (the library and the tools), include,
# lib (import library, module-definition file, type library), samples and
# docs (the reference made by Doxygen from the header and docs/). The
# package's Registry table comes from the built library (msi_registry, run
# under Wine in the build's prefix), its Environment table puts bin on the
# system path.
set -euo pipefail
build=$(cd "${1:?BUILD_DIR}" && pwd)
version=${2:?VERSION}
mkdir -p "${3:?OUT_DIR}"
out=$(cd "$3" && pwd)
source=$(cd "$(dirname "$0")/.." && pwd)
work=${4:-$build/package-$version}
name=Vlapi64-$version-sdk
stage=$work/$name
export WINEPREFIX=${WINEPREFIX:-$build/wineprefix} WINEDEBUG=-all

rm -rf "$work"
mkdir -p "$stage"/{bin,include,lib,samples,docs}
cp "$build/bin/Vlapi64.dll" "$build/bin/vlfax.exe" "$build/bin/vlsim.exe" "$stage/bin/"
cp "$source/include/vlapi.h" "$stage/include/"
cp "$build/lib/Vlapi64.lib" "$source/api/vlapi64.def" "$build/generated/VlLib.tlb" "$stage/lib/"
cp "$source"/samples/sample_client.{c,vbs,js} "$stage/samples/"
cp "$source/packaging/sdk_readme.md" "$stage/README.md"

# The reference: HTML from the header and the pages; warnings are errors,
# so an undocumented function fails the build.
sed -e "s|@SOURCE@|$source|g" -e "s|@OUTPUT@|$work/doxygen|g" -e "s|@VERSION@|$version|g" \
  "$source/packaging/Doxyfile.in" >"$work/Doxyfile"
(cd "$work" && doxygen Doxyfile)
cp -r "$work/doxygen/html/." "$stage/docs/"

rm -f "$out/$name.zip"
(cd "$work" && zip -qrX "$out/$name.zip" "$name")

# The package: every staged file but the library is harvested, the tools
# into BINDIR beside it; the library is named in vlapi64.wxs, where its
# registry entries belong.
harvest() {  # DIRECTORY_ID GROUP, from find's list (in that folder) on standard input
  sed 's|^\./||' | LC_ALL=C sort |
    wixl-heat --prefix "" --directory-ref "$1" --component-group "$2" --var var.Folder --win64
}
(cd "$stage" && find . -type f ! -path './bin/*' | harvest INSTALLDIR StagedFiles |
  sed 's/\$(var.Folder)/$(var.StageDir)/') >"$work/staged.wxs"
(cd "$stage/bin" && find . -type f ! -name Vlapi64.dll | harvest BINDIR StagedTools |
  sed 's/\$(var.Folder)/$(var.StageDir)\/bin/') >"$work/tools.wxs"
(cd "$stage" && wixl -a x64 -D Version="$version" -D StageDir=. -D Win64=yes \
  -o "$work/package.msi" "$source/packaging/vlapi64.wxs" "$work/staged.wxs" "$work/tools.wxs")

# What wixl cannot say: the Registry table, the Environment table, their
# actions, a same-version rebuild replaced like an older version (the
# maximum of the upgrade's range included) and the main feature required.
"$source/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null
wine "$build/bin/msi_registry.exe" "$(winepath -w "$stage/bin/Vlapi64.dll")" Library Vlapi64.dll \
  '[INSTALLDIR]bin' | tr -d '\r' >"$work/Registry.idt"
[ "$(wc -l <"$work/Registry.idt")" -gt 3 ] || { echo "make_packages: no registry entries" >&2; exit 1; }
printf 'Environment\tName\tValue\tComponent_\ns72\tl255\tL255\ts72\nEnvironment\tEnvironment\n%s\n' \
  "ToolsOnPath	=-*Path	[~];[BINDIR]	ToolsOnPath" >"$work/Environment.idt"
queries=()
query() { queries+=(-q "$1"); }
for action in RemoveRegistryValues:2600 RemoveEnvironmentStrings:3300 WriteRegistryValues:5000 \
  WriteEnvironmentStrings:5200; do
  query "INSERT INTO \`InstallExecuteSequence\` (\`Action\`, \`Sequence\`) VALUES ('${action%:*}', ${action#*:})"
done
# Attributes is part of the Upgrade table's key: the row is made anew.
read -r code max < <(msiinfo export "$work/package.msi" Upgrade | tr -d '\r' |
  awk -F'\t' '$7 == "WIX_UPGRADE_DETECTED" { print $1, $3 }')
query "DELETE FROM \`Upgrade\` WHERE \`ActionProperty\` = 'WIX_UPGRADE_DETECTED'"
query "INSERT INTO \`Upgrade\` (\`UpgradeCode\`, \`VersionMax\`, \`Attributes\`, \`ActionProperty\`) VALUES ('$code', '$max', 513, 'WIX_UPGRADE_DETECTED')"
query "UPDATE \`Feature\` SET \`Attributes\` = 16 WHERE \`Feature\` = 'Complete'"
(cd "$work" && msibuild package.msi -i Registry.idt -i Environment.idt "${queries[@]}")
mv "$work/package.msi" "$out/Vlapi64-$version-x64.msi"
echo "made $out/Vlapi64-$version-x64.msi and $out/$name.zip"
