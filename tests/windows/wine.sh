# To be sourced: $wine runs a program in a fresh prefix below $work, a new folder that is gone at the end.
# Exit status 77: wine64 is not there.
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
[ -x "$wine" ] || { echo "skipped: wine64 is not installed"; exit 77; }
work=$(mktemp -d)
export WINEPREFIX=$work/prefix WINEDEBUG=-all
# The server of the prefix ends a few seconds behind the last program.
remove_work() { for _ in 1 2 3 4 5 6; do rm -rf "$work" 2>/dev/null && return 0; sleep 1; done; }
trap 'remove_work' EXIT
