#!/usr/bin/env bash
# Makes the installer package and the SDK zip from a Windows build:
#   make_packages.sh BUILD_DIR VERSION OUT_DIR
# gives OUT_DIR/Vlapi64-VERSION-x64.msi and OUT_DIR/Vlapi64-VERSION-sdk.zip.
# Both hold the same staged tree: bin (the library and the tools), include,
# lib (import library, module-definition file, type library), samples and
# docs (the reference made by Doxygen from the header and docs/). The
# package's Registry table comes from the built library (msi_registry, run
# under Wine in the build's prefix), its Environment table puts bin on the
# system path.
set -euo pipefail
build=$(cd "${1:?BUILD_DIR}" && pwd)
version=${2:?VERSION}
out=${3:?OUT_DIR}
source=$(cd "$(dirname "$0")/.." && pwd)
work=$build/package-$version
name=Vlapi64-$version-sdk
stage=$work/$name
export WINEPREFIX=${WINEPREFIX:-$build/wineprefix} WINEDEBUG=-all

rm -rf "$work"
mkdir -p "$stage"/{bin,include,lib,samples,docs} "$out"
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

# The package: every staged file but the library is harvested; the library
# is named in vlapi64.wxs, where its registry entries belong.
(cd "$stage" && find . -type f ! -path ./bin/Vlapi64.dll | sed 's|^\./||' | LC_ALL=C sort |
  wixl-heat --prefix "" --directory-ref INSTALLDIR --component-group StagedFiles \
    --var var.StageDir --win64) >"$work/staged.wxs"
(cd "$stage" && wixl -a x64 -D Version="$version" -D StageDir=. -D Win64=yes \
  -o "$work/package.msi" "$source/packaging/vlapi64.wxs" "$work/staged.wxs")

"$source/scripts/wine-prefix.sh" "$WINEPREFIX" >/dev/null
wine "$build/bin/msi_registry.exe" "$(winepath -w "$stage/bin/Vlapi64.dll")" Library Vlapi64.dll \
  BINDIR | tr -d '\r' >"$work/Registry.idt"
printf 'Environment\tName\tValue\tComponent_\ns72\tl255\tL255\ts72\nEnvironment\tEnvironment\n%s\n' \
  "ToolsOnPath	=-*Path	[~];[BINDIR]	ToolsOnPath" >"$work/Environment.idt"
sequence() {
  echo "-q"
  echo "INSERT INTO \`InstallExecuteSequence\` (\`Action\`, \`Sequence\`) VALUES ('$1', $2)"
}
mapfile -t queries < <(sequence RemoveRegistryValues 2600; sequence RemoveEnvironmentStrings 3300
                        sequence WriteRegistryValues 5000; sequence WriteEnvironmentStrings 5200
                        echo "-q"
                        echo "INSERT INTO \`RemoveFile\` (\`FileKey\`, \`Component_\`, \`DirProperty\`, \`InstallMode\`) VALUES ('RemoveInstallDir', 'Library', 'INSTALLDIR', 2)")
(cd "$work" && msibuild package.msi -i Registry.idt -i Environment.idt "${queries[@]}")
mv "$work/package.msi" "$out/Vlapi64-$version-x64.msi"
echo "made $out/Vlapi64-$version-x64.msi and $out/$name.zip"
