#!/usr/bin/env bash
# Compares the export and import tables of the finished vorn.dll with what is promised:
# the members of class vorn, and nothing to load beside the host library and the system's own.
#   tables.sh i686|x86_64 BUILD_FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tables=$("$1-w64-mingw32-objdump" -p "$2/vorn.dll")

exports=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$tables" | sed -n 's/^\t\[ *[0-9]*\] //p')
diff "$here/exports.txt" <(LC_ALL=C sort <<<"$exports") || { echo "exports differ"; exit 1; }

libraries=$(sed -n 's/^\tDLL Name: //p' <<<"$tables" | tr 'A-Z' 'a-z' | LC_ALL=C sort)
diff <(printf '%s\n' kernel32.dll msvcrt.dll vornhost.dll) <(cat <<<"$libraries") || { echo "imported libraries differ"; exit 1; }

members=$(sed -n '/DLL Name: vornhost.dll/,/^$/p' <<<"$tables" | awk '$3 ~ /^_Z/ { print $3 }' | LC_ALL=C sort)
diff "$here/imports.txt" <(cat <<<"$members") || { echo "members of the host library differ"; exit 1; }

grep -q ' DisableThreadLibraryCalls$' <<<"$tables" || { echo "DisableThreadLibraryCalls is not imported"; exit 1; }
echo "exports and imports of vorn.dll ($1) are as promised"
