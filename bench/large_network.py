"""Writes a simulated plane network on a grid: distances from each point to its neighbours near and farther off, with normal
noise of 3 mm; a few blunders of 30 mm.   large_network.py FILE [POINTS ACROSS] [OBSERVATIONS A POINT]"""

import random
import sys

NEAR = [(0, 1), (1, 0), (1, 1), (1, -1), (0, 2), (2, 0), (1, 2), (2, 1), (2, -1), (1, -2), (2, 3), (3, 2)]


def write(path, across=100, each=10):
    chance = random.Random(7)
    places = {(i, j): (1000 + 100 * i + chance.uniform(-20, 20), 5000 + 100 * j + chance.uniform(-20, 20))
              for i in range(across) for j in range(across)}
    name = lambda p: f"P{p[0]:03d}-{p[1]:03d}"
    with open(path, "w") as out:
        out.write('[run]\ntitle = "Simulated grid"\ndimension = 2\n[sigma]\ndistances = 0.003\n[tables]\n')
        out.write('targets = """\nname x y code\n')
        for p, (x, y) in places.items():
            code = "fixed" if p in ((0, 0), (across - 1, 0), (0, across - 1), (across - 1, across - 1)) else "free"
            out.write(f"{name(p)} {x:.4f} {y:.4f} {code}\n")
        out.write('"""\ndistances = """\nfrom to value\n')
        for (i, j), (x, y) in places.items():
            ends = [(i + di, j + dj) for di, dj in NEAR] + [(i - dj, j + di) for di, dj in NEAR]
            for end in [e for e in ends if e in places][:each]:
                u, v = places[end]
                blunder = 0.03 if chance.random() < 2e-4 else 0.0
                value = ((x - u) ** 2 + (y - v) ** 2) ** 0.5 + chance.gauss(0, 0.003) + blunder
                out.write(f"{name((i, j))} {name(end)} {value:.4f}\n")
        out.write('"""\n')


if __name__ == "__main__":
    write(sys.argv[1], *(int(a) for a in sys.argv[2:]))
