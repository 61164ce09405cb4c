#!/usr/bin/env bash
# What becomes of a run when a process has no memory, is lost, or has nowhere to write, or when processes read different
# files: all end, with a line, and nothing is left half-written. lost.sh BUILD
set -euo pipefail
build=$(realpath "$1")
ladder=$(realpath "$(dirname "$0")/../../bench/ladder.py")
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 OPENBLAS_NUM_THREADS=1

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
failed=0
fail() { echo "$*"; failed=1; }

python3 "$ladder" make plane 40000 grid.inp >/dev/null
mkdir out other

# Runs with an order of the shell for the second process; wants a status (or any but 0), words, and no file.
ends() {
    local wanted=$1 words=$2 order=$3 status=0
    shift 3
    printf 'if [ "$OMPI_COMM_WORLD_RANK" = 1 ]; then %s; fi\nexec "$@"\n' "$order" >second.sh
    timeout 120 mpirun --quiet --oversubscribe -n 2 sh second.sh "$build/vorn-mpi" adjust "$@" >said 2>&1 || status=$?
    [ $status = "$wanted" ] || { [ "$wanted" = any ] && [ $status != 0 ] && [ $status != 124 ]; } ||
        fail "$order $*: status $status: $(cat said)"
    [ -z "$words" ] || grep -q -e "$words" said || fail "$order $*: not said '$words': $(cat said)"
    [ -z "$(ls -A out)" ] || fail "$order $*: left $(ls -A out)"
}

# Kills a process of the second pair once the worker has taken half a second of processor time.
kill_second() {
    local which=$1 watcher worker=
    for _ in $(seq 1000); do
        sleep 0.02
        [ -s second.pid ] && watcher=$(cat second.pid) && worker=$(pgrep -P "$watcher") || continue
        read -ra stat <"/proc/$worker/stat" 2>/dev/null || continue
        [ $((stat[13] + stat[14])) -lt 50 ] || break
    done
    echo "$worker" >worker.pid
    kill -9 "${!which}"
}

# The same, a process of the second pair being killed on the way.
ends_killed() {
    local which=$1
    shift
    rm -f second.pid worker.pid
    kill_second "$which" &
    ends "$@"
    wait
    for _ in $(seq 100); do [ ! -d "/proc/$(cat worker.pid)" ] || sleep 0.02; done
    [ ! -d "/proc/$(cat worker.pid)" ] || fail "the worker of the second process lives on"
}

outputs="--brief -o out/report.txt --json out/results.json"
ends 3 'process 1: out of memory' 'ulimit -v 400000' grid.inp $outputs
ends 3 'process 1: lost, ended by signal' 'ulimit -t 1' grid.inp $outputs
ends_killed worker 3 'process 1: lost, ended by signal 9' 'echo $$ >second.pid' grid.inp $outputs
ends_killed watcher any '' 'echo $$ >second.pid' grid.inp $outputs
ends 2 'cannot read standard input' true -
ends 2 'solver sparse' true grid.inp --solver compact
ends 3 'cannot write' true grid.inp --brief -o out/missing/report.txt
ends 3 'No space left' true grid.inp --brief -o /dev/full
sed 's/ 3\./ 4./' grid.inp >other/grid.inp
ends 3 'different networks' 'cd other' grid.inp --brief -o "$folder/out/report.txt"
ends 3 'different networks' 'cd other' grid.inp --brief --by-parts -o "$folder/out/report.txt"
ends 3 'process 1: lost, ended by signal' 'ulimit -t 1' grid.inp --by-parts $outputs
ends 3 'No space left' true grid.inp --brief --by-parts -o /dev/full
ends 3 'process 1: out of memory' 'ulimit -v 400000' grid.inp --by-parts $outputs
# One that the first process judges by itself.
printf '[run]\ndimension = 1\n[tables]\ntargets = """\nname z code\nA 1 free\nB 2 free\nC 3 free\nD 4 free\n"""\n' >loose.inp
printf 'height_differences = """\nfrom to value sigma\nA B 1 0.001\nC D 1 0.001\n"""\n' >>loose.inp
ends 3 'vorn: cannot write' true loose.inp --solver sparse --by-parts -o /dev/full
exit $failed
