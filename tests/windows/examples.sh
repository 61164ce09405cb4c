#!/usr/bin/env bash
# Adjusts every example with the program for Windows under wine64 and with that of this system, and compares the
# results, number by number. Prints a report too, and works in a folder with a name of any letters.
#   examples.sh vorn.exe NATIVE_BUILD_FOLDER
# Exit status 77: wine64 is not there.
set -euo pipefail
source "$(dirname "$0")/wine.sh"
native=$2
[ -x "$native/same-results" ] || { echo "build the preset release first: $native/same-results is missing"; exit 1; }
examples=$(cd "$(dirname "$0")/../../examples" && pwd)
export LC_ALL=C.UTF-8
cp -r "$examples" "$work/examples"
cd "$work/examples"

adjust_both() { # FILE SOLVER
    "$native/vorn" adjust "$1" --solver "$2" --quiet --json "$work/native.json" -o "$work/native.txt" || native_status=$?
    timeout 100 "$wine" "$exe" adjust "$1" --solver "$2" --quiet --json "Z:${work//\//\\}\\windows.json" \
        -o "Z:${work//\//\\}\\windows.txt" 2>"$work/log" || windows_status=$?
}
exe=$1
count=0
for file in *.inp; do
    if grep -q '^network *= *"EPSG' "$file"; then # reference systems are not in the program for Windows
        windows_status=0
        timeout 100 "$wine" "$exe" adjust "$file" >/dev/null 2>"$work/log" || windows_status=$?
        [ $windows_status != 0 ] && grep -q PROJ "$work/log" || { echo "$file: $windows_status"; cat "$work/log"; exit 1; }
        continue
    fi
    for solver in sparse compact; do
        native_status=0 windows_status=0
        rm -f "$work"/*.json
        adjust_both "$file" $solver 2>"$work/native.log"
        [ $native_status = $windows_status ] || { echo "$file $solver: $native_status $windows_status"; cat "$work/log"; exit 1; }
        "$native/same-results" "$work/native.json" "$work/windows.json" || { echo "$file $solver differs"; exit 1; }
        count=$((count + 1))
    done
done
[ $count -ge 20 ]

# A report on standard output, results beside a network whose name is not plain.
mkdir 'Höhen und Lagen'
cp strang_borre_distances_free.inp 'Höhen und Lagen/Netz 1.inp'
timeout 100 "$wine" "$exe" adjust 'Höhen und Lagen/Netz 1.inp' --csv tables >"$work/report" 2>"$work/log"
grep -q '^P  *free  *170.71227  *170.71853' "$work/report" || { cat "$work/report" "$work/log"; exit 1; }
[ -s tables/points.csv ]
status=0
timeout 100 "$wine" "$exe" adjust missing.inp 2>"$work/log" || status=$?
[ $status = 2 ] && grep -q 'missing.inp' "$work/log" || { echo "missing file: status $status"; cat "$work/log"; exit 1; }
echo "$count runs with equal results"
