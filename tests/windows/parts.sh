#!/usr/bin/env bash
# Runs a program of tests under wine64, and sees to it that the wide vectors of this processor were among them.
#   parts.sh windows_test.exe
# Exit status 77: wine64 is not there.
set -euo pipefail
source "$(dirname "$0")/wine.sh"
timeout 250 "$wine" "$1" 2>"$work/wine.log" | tee "$work/out" || { cat "$work/wine.log"; exit 1; }
for flag in avx2 avx512f; do
    grep -qw $flag /proc/cpuinfo || continue
    grep -q "this processor runs $flag" "$work/out" || { echo "tiles with $flag were not tested"; exit 1; }
done
