#!/usr/bin/env bash
# Runs every recipe of docs/recipes.md as it stands there, with networks that can be adjusted and others.
#   recipes.sh BUILD_FOLDER
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
PATH=$(cd "$1" && pwd):$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*" >&2; exit 1; }
good=$root/examples/strang_borre_distances_free.inp

# The n-th block of code of a language.
block() { awk -v open="\`\`\`$1" -v n="$2" '$0 == open && ++k == n { inside = 1; next } /^```/ { inside = 0 } inside' "$root/docs/recipes.md"; }
status_of() { local status=0; "$@" || status=$?; echo $status; }

mkdir "$work/pipe" && cd "$work/pipe"
cp "$good" bridge.inp
block sh 1 >recipe
sh recipe >points
[ "$(head -n 1 points | cut -f 1)" = P ] && [ "$(wc -l <points)" = 4 ] || fail "pipe: $(cat points)"
block bash 1 >recipe
bash recipe >out
[ ! -s out ] && awk '{ exit !($1 > 1.17 && $1 < 1.18) }' sigma.txt || fail "pipefail: $(cat out sigma.txt)"
echo nonsense >bridge.inp
[ "$(bash recipe 2>err)" = "not adjusted" ] || fail "pipefail misses a failure"
grep -q '^standard input:1:' err || fail "no place in standard input: $(cat err)"

mkdir "$work/make" && cd "$work/make"
block make 1 >Makefile
cp "$good" one.inp
cp "$root/examples/ghilani_levelling.inp" two.inp
make -s -j2
[ -s one.txt ] && [ -s one.json ] && [ -s two.txt ] || fail "make: no reports"
make -q || fail "make adjusts what has not changed"
echo nonsense >three.inp
! make -s 2>err || fail "make misses a failure"
[ -z "$(find . -name 'three.*' ! -name '*.inp')" ] || fail "make leaves $(ls)"

mkdir -p "$work/folder/networks" && cd "$work/folder"
cp "$good" networks/one.inp
cp "$root/examples/ghilani_levelling.inp" "networks/two words.inp"
block sh 2 >recipe
[ "$(status_of sh recipe)" = 0 ] && [ -s "networks/two words.txt" ] && [ ! -e failed.txt ] || fail "folder: $(ls networks)"
echo nonsense >networks/three.inp
[ "$(status_of sh recipe 2>err)" = 123 ] && [ "$(cat failed.txt)" = "networks/three.inp 2" ] || fail "folder misses a failure"

mkdir "$work/wall" && cd "$work/wall"
block sh 3 >watch
chmod +x watch
cp "$good" hour.inp
out=$(./watch) && [ -z "$out" ] && [ -s good.json ] || fail "alarm without need: $out"
cp good.json before.json
watch_again() { out=$(./watch) && fail "no alarm: $1" || status=$?; [ $status = "$2" ] || fail "$1: status $status"; }
sed 's/100.010  0.01$/100.910  0.01/' "$good" >hour.inp
watch_again "a gross error" 10
[[ $out = *"do not agree"*"suspicious: distance"* ]] || fail "a gross error: $out"
echo nonsense >hour.inp
watch_again "no network" 2
sed '/^3 *P/d; /^2 *3/d; /^1 *3/d' "$good" >hour.inp
watch_again "a point without observations" 1
cmp good.json before.json || fail "an alarm touches the last good results"
[ -z "$(find . -name '*.??????' ! -name '*.json')" ] || fail "files left behind: $(ls)"
echo "all recipes work"
