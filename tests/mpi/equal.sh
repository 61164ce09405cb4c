#!/usr/bin/env bash
# Whether vorn-mpi gives the results of vorn for every example, numbers to 1e-9, the same words and the same status:
#   equal.sh BUILD PROCESSES
set -euo pipefail
build=$(realpath "$1") processes=$2
examples=$(realpath "$(dirname "$0")/../../examples")
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OPENBLAS_NUM_THREADS=1
mpi() { mpirun --quiet --oversubscribe -n "$processes" "$build/vorn-mpi" "$@"; }

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
failed=0
fail() { echo "$*"; failed=1; }

# Lines of a report but for its time, numbers that are zero but for rounding made zero.
words() { grep -v -E '[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]+ UTC|seconds' "$1" | sed -E 's/-(0\.0+\b)/ \1/g'; }

# What a program says but for its steps, which it tells when it takes long.
said() {
    grep -v -x -E '(reading|first coordinates|closures|equations|datum|order|factor|inverse|statistics|writing)( [0-9]+ %)?' "$1" || true
}

# Runs both and compares what they write and say.
same() {
    local file=$1 one=0 all=0
    shift
    rm -f one.* all.*
    "$build/vorn" adjust "$file" --solver sparse -o one.txt --json one.json "$@" 2>one.words || one=$?
    mpi adjust "$file" --solver sparse -o all.txt --json all.json "$@" 2>all.words || all=$?
    [ $one = $all ] || fail "$file $*: status $all beside $one: $(cat all.words)"
    [ ! -e one.json ] || "$build/same-results" one.json all.json || fail "$file $*: other results"
    [ ! -e one.txt ] || diff <(words one.txt) <(words all.txt) >difference || fail "$file $*: other report: $(head -6 difference)"
    diff <(said one.words) <(said all.words) >difference || fail "$file $*: other words: $(cat difference)"
}

for file in "$examples"/*.inp; do same "$file"; done
same "$examples/gross_error.inp" --snoop
same "$examples/gross_error.inp" --robust huber
same "$examples/total_station_heights.inp" --components use

# Factor and inverse in files: the same numbers to the last bit, and a note.
python3 "$examples/../bench/ladder.py" make plane 5000 grid.inp >/dev/null
mpi adjust grid.inp --solver sparse --quiet --brief -o one.txt --json one.json
mpi adjust grid.inp --solver sparse --brief -o all.txt --json all.json --memory 6M 2>all.words || fail "--memory: $(cat all.words)"
python3 - one.json all.json <<'END' || fail "--memory: other results"
import json, sys
one, all = (json.load(open(name)) for name in sys.argv[1:])
for results in (one, all): del results["notes"], results["seconds"]
sys.exit(one != all)
END
[ "$processes" != 2 ] || grep -q 'more than --memory 6144K: they are kept in ' all.words || fail "--memory: $(cat all.words)"

# Results without what is looked for in whole networks alone.
of_parts() {
    python3 - "$1" <<'END'
import json, sys
results = json.load(open(sys.argv[1]))
for key in "notes", "closures": results.pop(key, None)
json.dump(results, open(sys.argv[1], "w"))
END
}

# A network of which each process reads a part; one that cannot be divided is refused.
by_parts() {
    local file=$1 one=0 all=0
    shift
    rm -f one.* all.*
    "$build/vorn" adjust "$file" --solver sparse --quiet -o one.txt --json one.json "$@" 2>one.words || one=$?
    mpi adjust "$file" --solver sparse --quiet --by-parts -o all.txt --json all.json "$@" 2>all.words || all=$?
    if [ $all = 2 ] && [ $one != 2 ] && grep -q -- 'leave out --by-parts' all.words; then return; fi
    [ $one = $all ] || fail "$file --by-parts $*: status $all beside $one: $(cat all.words)"
    [ -e one.json ] || return 0
    taken=$((taken + 1))
    of_parts one.json
    of_parts all.json
    "$build/same-results" one.json all.json || fail "$file --by-parts $*: other results"
}

taken=0
for file in "$examples"/*.inp; do by_parts "$file"; done
for kind in levelling plane free hall gnss; do
    python3 "$examples/../bench/ladder.py" make $kind 600 $kind.inp >/dev/null
    by_parts $kind.inp
done
[ "$processes" = 1 ] || [ $taken -ge 8 ] || fail "only $taken networks were adjusted by parts"

# Refusals: a fault of the file, a network that nothing holds.
printf '[run]\ndimension = 7\n' >fault.inp
same fault.inp
cat >loose.inp <<'END'
[run]
dimension = 1
[tables]
targets = """
name z code
A 1.0 free
B 2.0 free
C 3.0 free
D 4.0 free
"""
height_differences = """
from to value sigma
A B 1.0 0.001
C D 1.0 0.001
"""
END
same loose.inp
by_parts loose.inp
sed 's/^C D/C Q/' loose.inp >unknown.inp
by_parts unknown.inp
exit $failed
