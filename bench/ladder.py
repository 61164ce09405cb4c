#!/usr/bin/env python3
"""Time and memory of the whole program on large networks, and what each step takes.

  ladder.py make KIND UNKNOWNS FILE [--seed N]        writes a network file, its points in random order
  ladder.py run PROGRAM KIND:UNKNOWNS ... [--repeat N] makes networks, runs the program, prints a table
  ladder.py whole PROGRAM SPARSE_BENCH [--million]     the table of docs/performance.md: all kinds with 10,000
                                                       unknowns, planes with 100,000 (and 1,000,000: 9 GB, half an
                                                       hour), each plane beside CHOLMOD in the same run

Kinds, with their unknowns:
  levelling  a grid of heights, height differences to the neighbours in rows and columns; 1 a point
  plane      a grid of stations, directions and distances to the 8 around; 3 a point; two are fixed
  free       the same, nothing fixed
  hall       4 stations in a hall, directions, zenith angles and distances to all targets on its
             walls; 3 a target; four targets are fixed
  gnss       a grid of points in space, baselines with covariances to 4 neighbours; 3 a point

A run writes the brief report and the JSON, with statistics. The table has the least of the repetitions: processor
time of one thread, time on the clock with two, peak memory and the steps in seconds of processor time of one thread.
"""

import argparse
import json
import math
import os
import random
import re
import subprocess
import sys
import tempfile
import time

GON = math.pi / 200.0
STEPS = ["reading", "first coordinates", "closures", "equations", "datum", "order", "factor", "inverse", "statistics", "writing"]


def grid(count, rng):
    """Names of the points of a square grid of about `count`, shuffled, and the neighbours of each."""
    side = max(3, round(math.sqrt(count)))
    names = [f"P{i}" for i in range(side * side)]
    order = list(range(side * side))
    rng.shuffle(order)

    def neighbours(i, around):
        row, column = divmod(i, side)
        for dr, dc in around:
            if 0 <= row + dr < side and 0 <= column + dc < side:
                yield i + dr * side + dc

    return side, names, order, neighbours


ALL_AROUND = [(a, b) for a in (-1, 0, 1) for b in (-1, 0, 1) if (a, b) != (0, 0)]


def begin(out, dimension):
    out.write(f'[run]\ndimension = {dimension}\n\n[units]\nlength = "m"\nangle = "gon"\n\n[tables]\n')


def table(out, name, heading, rows):
    out.write(f'{name} = """\n{heading}\n')
    out.writelines(rows)
    out.write('"""\n')


def levelling(out, unknowns, rng):
    side, names, order, neighbours = grid(unknowns, rng)
    z = [rng.uniform(400.0, 450.0) for _ in names]
    begin(out, 1)
    table(out, "targets", "name z code",
          (f"{names[i]} {z[i] + rng.uniform(-.05, .05):.3f} {'free' if i else 'fixed'}\n" if i
           else f"{names[0]} {z[0]:.6f} fixed\n" for i in order))
    table(out, "height_differences", "from to value sigma",
          (f"{names[i]} {names[k]} {z[k] - z[i] + rng.gauss(0, .001):.6f} 0.001\n"
           for i in order for k in neighbours(i, [(0, 1), (1, 0)])))


def plane(out, unknowns, rng, fixed=True):
    side, names, order, neighbours = grid(unknowns / 3, rng)
    at = [(200.0 * (i // side + rng.uniform(-.1, .1)), 200.0 * (i % side + rng.uniform(-.1, .1))) for i in order]
    xy = [None] * len(at)
    for i, p in zip(order, at):
        xy[i] = p
    zero = [rng.uniform(0.0, 400.0) for _ in names]
    held = {0, len(names) - 1} if fixed else set()
    off = [(0.0, 0.0) if i in held else (rng.uniform(-.05, .05), rng.uniform(-.05, .05)) for i in range(len(names))]
    begin(out, 2)
    table(out, "stations", "name x y code",
          (f"{names[i]} {xy[i][0] + off[i][0]:.6f} {xy[i][1] + off[i][1]:.6f} {'fixed' if i in held else 'free'}\n"
           for i in order))

    def sight(i, k):
        return xy[k][0] - xy[i][0], xy[k][1] - xy[i][1]

    table(out, "distances", "from to value sigma",
          (f"{names[i]} {names[k]} {math.hypot(*sight(i, k)) + rng.gauss(0, .003):.6f} 0.003\n"
           for i in order for k in neighbours(i, ALL_AROUND)))

    def reading(i, k):
        dx, dy = sight(i, k)
        return (math.atan2(dy, dx) / GON - zero[i] + rng.gauss(0, .0005)) % 400.0

    table(out, "directions", "from to value sigma",
          (f"{names[i]} {names[k]} {reading(i, k):.7f} 0.0005\n" for i in order for k in neighbours(i, ALL_AROUND)))


def free(out, unknowns, rng):
    plane(out, unknowns, rng, fixed=False)


def hall(out, unknowns, rng):
    count = max(8, round((unknowns - 16 + 12) / 3))
    length, width = 60.0, 30.0

    def wall(way):
        for x, y in ((way, 0.0), (length, way - length), (2 * length + width - way, width)):
            if 0.0 <= x <= length and 0.0 <= y <= width:
                return x, y
        return 0.0, 2 * (length + width) - way

    corners = [0.0, length, length + width, 2 * length + width]
    targets = [(*wall(corners[i] if i < 4 else rng.uniform(0.0, 2 * (length + width))), rng.uniform(.5, 12.0))
               for i in range(count)]
    stations = [(length * (i + .5) / 4, width * (.35 if i % 2 else .65), rng.uniform(1.5, 1.8)) for i in range(4)]
    zero = [rng.uniform(0.0, 400.0) for _ in stations]
    order = list(range(count))
    rng.shuffle(order)
    begin(out, 3)

    def near(p, by):
        return " ".join(f"{c + rng.uniform(-by, by):.6f}" for c in p)

    table(out, "stations", "name x y z code",
          (f"S{i} {near(stations[i], .03)} free\n" for i in range(4)))
    table(out, "targets", "name x y z code",
          (f"P{i} {near(targets[i], 0.0 if i < 4 else .03)} {'fixed' if i < 4 else 'free'}\n" for i in order))

    def rows(value):
        return (f"S{s} P{i} {value(s, [b - a for a, b in zip(stations[s], targets[i])])}\n"
                for s in range(4) for i in order)

    table(out, "distances", "from to value sigma",
          rows(lambda s, d: f"{math.hypot(*d) + rng.gauss(0, .0005):.6f} 0.0005"))
    table(out, "directions", "from to value sigma",
          rows(lambda s, d: f"{(math.atan2(d[1], d[0]) / GON - zero[s] + rng.gauss(0, .0005)) % 400:.7f} 0.0005"))
    table(out, "vertical_angles", "from to value sigma",
          rows(lambda s, d: f"{math.atan2(math.hypot(d[0], d[1]), d[2]) / GON + rng.gauss(0, .0005):.7f} 0.0005"))


def gnss(out, unknowns, rng):
    side, names, order, neighbours = grid(unknowns / 3, rng)
    at = [(1000.0 * (i // side), 1000.0 * (i % side), rng.uniform(400.0, 900.0)) for i in range(len(names))]
    begin(out, 3)
    table(out, "targets", "name x y z code",
          (f"{names[i]} {' '.join(f'{c + (rng.uniform(-.05, .05) if i else 0.0):.6f}' for c in at[i])} "
           f"{'free' if i else 'fixed'}\n" for i in order))

    def components(i, k):
        return " ".join(f"{b - a + rng.gauss(0, .005):.6f}" for a, b in zip(at[i], at[k]))

    table(out, "baselines", "from to dx dy dz cxx cyy czz cxy cxz cyz",
          (f"{names[i]} {names[k]} {components(i, k)} 2.5e-5 2.5e-5 4e-5 5e-6 -4e-6 6e-6\n"
           for i in order for k in neighbours(i, [(0, 1), (1, 0), (1, 1), (1, -1)])))


KINDS = {"levelling": levelling, "plane": plane, "free": free, "hall": hall, "gnss": gnss}


def make(kind, unknowns, path, seed):
    with open(path, "w") as out:
        KINDS[kind](out, unknowns, random.Random(seed))


def start(program, network, folder, threads):
    """Seconds of processor time and on the clock, megabytes and the processor seconds of each step."""
    errors = os.path.join(folder, "errors.txt")
    for old in ("report.txt", "results.json"):  # to drop a large file takes a while, which is no part of a run
        if os.path.exists(os.path.join(folder, old)):
            os.remove(os.path.join(folder, old))
    begun = time.monotonic()
    with open(errors, "w") as err:
        child = subprocess.Popen(
            [program, "adjust", network, "--brief", "--times", "--threads", str(threads),
             "-o", os.path.join(folder, "report.txt"), "--json", os.path.join(folder, "results.json")], stderr=err)
        _, status, used = os.wait4(child.pid, 0)
    clock = time.monotonic() - begun
    text = open(errors).read()
    if status != 0:
        sys.exit(f"{network}: status {status}\n{text}")
    steps = {name: float(s) for name, s in re.findall(r"^time: (.*?)\s+[\d.]+ s, processor\s+([\d.]+) s", text, re.MULTILINE)}
    return used.ru_utime + used.ru_stime, clock, used.ru_maxrss / 1000.0, steps


def cholmod(bench, unknowns):
    """Seconds of processor time that CHOLMOD takes to analyse and factor the matrix of a plane network."""
    one = dict(os.environ, OMP_NUM_THREADS="1", OPENBLAS_NUM_THREADS="1")
    out = subprocess.run([bench, f"--benchmark_filter=CholmodBoth/{unknowns}/", "--benchmark_format=json"],
                         env=one, check=True, capture_output=True).stdout
    return min((b["cpu_time"] for b in json.loads(out)["benchmarks"] if b["name"].endswith("_least")), default=0.0) / 1000.0


def rung(program, kind, unknowns, repeat, seed, folder, bench):
    network = os.path.join(folder, "network.inp")
    make(kind, unknowns, network, seed)
    seconds, _, megabytes, steps = min((start(program, network, folder, 1) for _ in range(repeat)), key=lambda r: r[0])
    clock = min(start(program, network, folder, 2)[1] for _ in range(repeat))
    cells = [f"{kind} {unknowns:,}", f"{seconds:.3f}", f"{clock:.3f}", f"{megabytes:.0f}"]
    if bench:
        beside = cholmod(bench, unknowns) if kind == "plane" else 0.0
        cells.append(f"{beside:.3f}, {seconds / beside:.1f}" if beside > 0.0 else "")
    return cells + [f"{steps.get(s, 0.0):.3f}" for s in STEPS]


def ladder(program, rungs, repeat, seed, bench=None):
    heads = ["network", "seconds", "clock", "MB"] + (["CHOLMOD, ratio"] if bench else []) + STEPS
    print("| " + " | ".join(heads) + " |\n" + "|---" * len(heads) + "|")
    with tempfile.TemporaryDirectory() as folder:
        for kind, unknowns in rungs:
            often = repeat if unknowns < 100000 else 1
            print("| " + " | ".join(rung(program, kind, unknowns, often, seed, folder, bench)) + " |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    one = commands.add_parser("make")
    one.add_argument("kind", choices=KINDS)
    one.add_argument("unknowns", type=int)
    one.add_argument("file")
    many = commands.add_parser("run")
    many.add_argument("program")
    many.add_argument("rungs", nargs="+")
    whole = commands.add_parser("whole")
    whole.add_argument("program")
    whole.add_argument("bench")
    whole.add_argument("--million", action="store_true")
    for p in (many, whole):
        p.add_argument("--repeat", type=int, default=5)
    for p in (one, many, whole):
        p.add_argument("--seed", type=int, default=1)
    call = parser.parse_args()
    if call.command == "make":
        make(call.kind, call.unknowns, call.file, call.seed)
        return
    if call.command == "run":
        rungs = [(kind, int(unknowns)) for kind, unknowns in (r.split(":") for r in call.rungs)]
    else:
        rungs = [(kind, 10000) for kind in KINDS] + [("plane", 100000)] + [("plane", 1000000)] * call.million
    ladder(os.path.abspath(call.program), rungs, call.repeat, call.seed, getattr(call, "bench", None))


if __name__ == "__main__":
    main()
