#!/usr/bin/env bash
# Runs the small host under wine64 with the 64-bit library and compares its reports and side
# files byte by byte with those of the same host on this system.
#   reports.sh WINDOWS_BUILD_FOLDER NATIVE_BUILD_FOLDER
# Exit status 77: wine64 is not there.
set -euo pipefail
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
[ -x "$wine" ] || { echo "skipped: wine64 is not installed"; exit 77; }
[ -x "$2/windows-host" ] || { echo "build the preset release first: $2/windows-host is missing"; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/native" "$work/windows"
export WINEPREFIX=$work/prefix WINEDEBUG=-all
"$2/windows-host" "$work/native"
timeout 300 "$wine" "$1/windows-host.exe" "$work/windows" "$1/vorn.dll" 2>"$work/wine.log" ||
    { cat "$work/wine.log"; exit 1; }
[ "$(ls "$work/native")" = "$(ls "$work/windows")" ] || { echo "other files: $(ls "$work/windows")"; exit 1; }
for file in "$work"/native/*; do cmp "$file" "$work/windows/$(basename "$file")"; done
echo "same bytes: $(ls "$work/native" | tr '\n' ' ')"
