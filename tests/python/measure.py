"""Times of 100,000 observations into a network, through a run and out again: measure.py"""

import time

import numpy as np

import vorn

SIDE = 224  # points along a square grid of levelling lines


def main():
    random = np.random.default_rng(1)
    number = np.arange(SIDE * SIDE).reshape(SIDE, SIDE)
    first = np.concatenate((number[:, :-1].ravel(), number[:-1].ravel()))
    second = np.concatenate((number[:, 1:].ravel(), number[1:].ravel()))
    z = random.normal(100, 10, SIDE * SIDE)
    value = z[second] - z[first] + random.normal(0, 0.001, len(first))
    start = time.process_time()
    network = vorn.Network(
        dimension=1,
        targets={"name": number.ravel(), "z": z, "code": np.where(number.ravel() == 0, "fixed", "free")},
        height_differences={"from": first, "to": second, "value": value, "sigma": 0.001},
    )
    read = time.process_time()
    result = network.adjust()
    ran = time.process_time()
    result.points, result.residuals
    out = time.process_time()
    print(f"{len(first)} observations: in {read - start:.2f} s, run {ran - read:.2f} s, out {out - ran:.2f} s of the processor")


if __name__ == "__main__":
    main()
