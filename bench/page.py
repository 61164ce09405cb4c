"""How long the page of a large network takes in headless Chromium: page.py PROGRAM [REPETITIONS]

Loads a network of 10,000 points and 100,000 observations, moves and zooms its plot for five seconds each, and sorts,
filters and chooses. Prints the best of the repetitions, and the processor time of the page's main thread, which says what
a machine takes that others use at the same time."""

import subprocess
import sys
import tempfile
import time
from pathlib import Path

HOUSE = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(HOUSE / "tests/browser"))

from chromium import Chromium  # noqa: E402
import large_network  # noqa: E402

# Frames in a second while the plot is moved in each; the longest in milliseconds.
FRAMES = """new Promise(done => {
    const plot = document.getElementById("plot").plot, start = performance.now();
    let n = 0, last = start, longest = 0;
    const step = () => {
        const now = performance.now();
        longest = Math.max(longest, now - last);
        last = now;
        n++;
        MOVE;
        if (now - start < 5000) requestAnimationFrame(step); else done([n / (now - start) * 1000, longest]);
    };
    requestAnimationFrame(step);
})"""

ACTS = {
    "sort by w (ms)": "document.querySelectorAll('.window:not([hidden]) th')[10].firstChild.click()",
    "sort by name (ms)": "document.querySelectorAll('.window:not([hidden]) th')[1].firstChild.click()",
    "filter w>3 (ms)": "(f => { f.value = 'w>3'; f.dispatchEvent(new Event('input')); })(document.getElementById('filter'))",
    "filter a name (ms)": "(f => { f.value = 'p050-0'; f.dispatchEvent(new Event('input')); })(document.getElementById('filter'))",
    "choose a point (ms)": "document.getElementById('plot').plot.pick(600, 300)",
}


def processor_time(browser):
    return next(m["value"] for m in browser.call("Performance.getMetrics")["metrics"] if m["name"] == "TaskDuration")


def measure(page):
    with Chromium(1400, 1000) as browser:
        browser.call("Performance.enable", timeDomain="threadTicks")
        found = {"load (s)": -browser.open(page), "load, processor (s)": -processor_time(browser)}
        start = time.monotonic()
        browser.wait("document.getElementById('plot').plot.layer !== null", 60)
        found["drawn behind that (s)"] = -(time.monotonic() - start)
        for name, move in (("panning", "plot.pan(9 * Math.cos(n / 40), 9 * Math.sin(n / 40))"), ("zooming", "plot.zoom(n % 200 < 100 ? 1.02 : 1 / 1.02)")):
            before = processor_time(browser)
            frames, longest = browser.run(FRAMES.replace("MOVE", move))
            found[f"{name}, processor a frame (ms)"] = -(processor_time(browser) - before) / (5 * frames) * 1e3
            found[f"{name} (frames/s)"] = frames
            found[f"{name}, longest frame (ms)"] = -longest
        browser.run("document.querySelectorAll('#tabs button')[1].click()")
        for name, act in ACTS.items():
            found[name] = -browser.run(f"(() => {{ const start = performance.now(); {act}; return performance.now() - start; }})()")
        assert not browser.complaints, browser.complaints
        return found


def main(program, repetitions):
    with tempfile.TemporaryDirectory() as folder:
        network, page = Path(folder) / "large.inp", Path(folder) / "large.html"
        large_network.write(network)
        subprocess.run([program, "adjust", network, "--quiet", "--html", page, "-o", Path(folder) / "report.txt"], check=True)
        print(f"{'size (MB)':32}{page.stat().st_size / 1e6:10.1f}")
        runs = [measure(page) for _ in range(repetitions)]
        for name in runs[0]:
            print(f"{name:32}{abs(max(run[name] for run in runs)):10.2f}")


if __name__ == "__main__":
    main(str(Path(sys.argv[1] if len(sys.argv) > 1 else HOUSE / "build/release/vorn").resolve()), int(sys.argv[2]) if len(sys.argv) > 2 else 3)
