"""The page of results in a real browser: page_test.py PROGRAM [names of tests]. Needs chromium; opens files only."""

import json
import math
import re
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from chromium import Chromium

HOUSE = Path(__file__).resolve().parents[2]
EXAMPLES = sorted((HOUSE / "examples").glob("*.inp"))
PROGRAM = "build/release/vorn"

# A plane network with a blunder, three instruments, and names that no page may take for its own.
HOSTILE = """[run]
title = "</title></script><script>window.hacked = 1</script><img src=x onerror=hacked=1>"
dimension = 2
[tables]
targets = '''
name x y code
<b>A 0 0 fixed
'&amp; 1000 0 fixed
</script><script>hacked=1</script> 1000 1000 free
<img/src=x/onerror=hacked=1> 0 1000 free
'''
distances = '''
from to value sigma
<b>A '&amp; 1000.001 0.002
<b>A </script><script>hacked=1</script> 1414.2130 0.002
<b>A <img/src=x/onerror=hacked=1> 1000.002 0.002
'&amp; </script><script>hacked=1</script> 999.998 0.002
'&amp; <img/src=x/onerror=hacked=1> 1414.2140 0.002
</script><script>hacked=1</script> <img/src=x/onerror=hacked=1> 1000.001 0.002
'''
"""

REFUSED = """[run]
dimension = 2
[tables]
targets = '''
name x y code
A 0 0 fixed
B 10 0 fixed
C 5 5 free
'''
distances = '''
from to value sigma
A B 10 0.001
A C 7.07 0.001
'''
"""


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.browser = Chromium().__enter__()

    @classmethod
    def tearDownClass(cls):
        cls.browser.__exit__()
        cls.folder.cleanup()

    def setUp(self):
        self.browser.resize(1400, 950)
        self.browser.dark(False)

    def tearDown(self):
        self.assertEqual(self.browser.complaints, [])

    def adjust(self, network, *more):
        """The network's page, opened, and the same results as JSON."""
        out = Path(self.folder.name) / Path(network).stem
        answer = subprocess.run([PROGRAM, "adjust", str(network), "--quiet", "--html", f"{out}.html", "--json", f"{out}.json", "-o", f"{out}.txt", *more],
                                cwd=HOUSE, capture_output=True, text=True)
        self.assertIn(answer.returncode, (0, 1), answer.stderr)
        self.browser.open(f"{out}.html")
        self.report = Path(f"{out}.txt").read_text()
        return json.loads(Path(f"{out}.json").read_text())

    def example(self, name, *more):
        return self.adjust(HOUSE / "examples" / f"{name}.inp", *more)

    def written(self, name, text):
        path = Path(self.folder.name) / name
        path.write_text(text)
        return self.adjust(path)

    def screen(self, point):
        """Pixel of a point in the plot."""
        return self.browser.run(f"(() => {{ const p = document.getElementById('plot').plot; return p.screen(p.data.byName.get({json.dumps(point)})); }})()")

    def in_window(self, place):
        left, top = self.browser.run("(() => { document.getElementById('network').scrollIntoView({behavior: 'instant'}); const b = document.getElementById('plot').getBoundingClientRect(); return [b.left, b.top]; })()")
        return place[0] + left, place[1] + top

    def cells(self, column):
        """Texts of a column of the open table, as far as they are drawn."""
        heads = self.browser.run("[...document.querySelectorAll('.window:not([hidden]) th button')].map(b => b.firstChild.textContent)")
        n = heads.index(column) + 1
        return self.browser.run(f"[...document.querySelectorAll('.window:not([hidden]) tbody tr:not(.spacer) td:nth-child({n})')].map(c => c.textContent)")

    def sort(self, column):
        heads = self.browser.run("[...document.querySelectorAll('.window:not([hidden]) th button')].map(b => b.firstChild.textContent)")
        self.browser.click_on(f".window:not([hidden]) th:nth-child({heads.index(column) + 1}) button")

    def open_table(self, name):
        tabs = self.browser.run("[...document.querySelectorAll('#tabs button')].map(b => b.textContent)")
        self.browser.click_on(f"#tabs button:nth-child({next(i for i, t in enumerate(tabs) if t.startswith(name)) + 1})")

    def filter(self, text):
        self.browser.click_on("#filter")
        self.browser.run("document.getElementById('filter').select()")
        self.browser.type(text)

    def rows(self):
        return int(re.match(r"\d+", self.browser.run("document.getElementById('count').textContent")).group())

    def pixels(self, x, y, width, height, result="[...d]"):
        """What an expression makes of the bytes d of a part of the plot: red, green, blue, opacity of each pixel."""
        self.browser.frames(3)
        return self.browser.run(f"""(() => {{
            const copy = new OffscreenCanvas({width}, {height}).getContext("2d", {{ willReadFrequently: true }});
            copy.drawImage(document.getElementById("plot"), {-x}, {-y});
            const d = copy.getImageData(0, 0, {width}, {height}).data;
            return {result}; }})()""")

    def ink(self):
        """Pixels of the plot that are not bare."""
        width, height = self.browser.run("(() => { const c = document.getElementById('plot'); return [c.width, c.height]; })()")
        return self.pixels(0, 0, width, height, "d.reduce((n, v, i) => n + (i % 4 === 3 && v > 0), 0)")

    # Whole pages

    def test_every_example_opens_is_drawn_and_asks_nothing_of_others(self):
        for network in EXAMPLES:
            with self.subTest(network.stem):
                results = self.adjust(network)
                self.assertGreater(self.ink(), 1500)
                self.assertEqual([r for r in self.browser.requests if not r.startswith(("file:", "data:"))], [])
                self.assertEqual(len([r for r in self.browser.requests if r.startswith("file:")]), 1)
                self.assertEqual(self.browser.run("document.getElementById('title').textContent"), results["title"])
                self.open_table("Observations")
                self.assertEqual(self.rows(), len(results["residuals"]))
                self.assertEqual(self.browser.complaints, [])

    def test_the_page_holds_the_numbers_of_the_json(self):
        results = self.example("total_station_heights")
        data = self.browser.run("(() => { const d = document.getElementById('plot').plot.data; return { x: d.points.map(p => p.x), s: d.points.map(p => p.deviation), o: d.observations.map(o => [o.value, o.v, o.sigma, o.r, o.w, o.adjusted]) }; })()")
        for p, x, s in zip(results["points"], data["x"], data["s"]):
            for k, axis in enumerate("xyz"):
                self.assertAlmostEqual(x[k], p["adjusted"][axis], delta=1e-8)
                deviation = p.get("standard_deviation", {}).get(axis)
                self.assertEqual(s[k] is None, deviation is None)
                if deviation:
                    self.assertAlmostEqual(s[k], deviation, delta=1e-5 * deviation)
        for r, o in zip(results["residuals"], data["o"]):
            for mine, theirs in zip(o[:5], ("value", "residual", "sigma", "redundancy", "normalised")):
                self.assertAlmostEqual(mine, r[theirs], delta=1e-5 * abs(r[theirs]) + 1e-12)
            turn = 2 * math.pi if r["unit"] == "rad" else math.inf
            self.assertAlmostEqual(math.remainder(o[5] - r["adjusted"], turn), 0, delta=1e-9)

    def test_the_verdict_is_that_of_the_report(self):
        for name in ("niemeier_levelling_free", "ghilani_baselines"):
            self.example(name)
            shown = self.browser.run("[...document.querySelectorAll('#verdict p')].map(p => p.textContent)")
            self.assertEqual(shown[:3], self.report.rstrip().split("\n")[-3:])

    def test_a_network_that_is_refused_says_why(self):
        results = self.written("refused.inp", REFUSED)
        self.assertFalse(results["adjusted"])
        self.assertIn(results["words"][0], self.browser.run("document.getElementById('verdict').textContent"))

    def test_engine_solvers_give_pages_of_what_they_have(self):
        for solver in ("compact", "jordan", "simplex"):
            with self.subTest(solver):
                results = self.example("niemeier_distance_direction", "--solver", solver)
                self.assertGreater(self.ink(), 1500)
                self.open_table("Observations")
                self.assertEqual(self.rows(), len(results["residuals"]))
                heads = self.browser.run("[...document.querySelectorAll('.window:not([hidden]) th button')].map(b => b.firstChild.textContent)")
                self.assertEqual("w" in heads, solver != "simplex")
                self.assertNotIn("r", heads)

    def test_planned_networks_show_redundancy(self):
        self.example("niemeier_distance_direction", "--mode", "propagation")
        self.assertGreater(self.ink(), 1500)
        self.assertIn("redundancy", self.browser.run("document.getElementById('legend').textContent"))
        self.assertTrue(self.browser.run("document.getElementById('spread').hidden"))

    # Texts of others

    def test_names_and_titles_are_only_text(self):
        self.written("hostile.inp", HOSTILE)
        self.assertFalse(self.browser.run("'hacked' in window"))
        self.assertEqual(self.browser.run("document.title"), "</title></script><script>window.hacked = 1</script><img src=x onerror=hacked=1>")
        self.assertEqual(self.cells("point"), ["<b>A", "'&amp;", "</script><script>hacked=1</script>", "<img/src=x/onerror=hacked=1>"])
        self.open_table("Observations")
        self.browser.click_on(".window:not([hidden]) tbody tr:nth-child(3)")
        self.assertEqual(self.browser.run("document.getElementById('source').textContent"), "<b>A </script><script>hacked=1</script> 1414.2130 0.002")
        self.assertFalse(self.browser.run("'hacked' in window"))
        self.assertEqual(self.browser.run("document.querySelectorAll('img, b').length"), 0)

    # Plot

    def test_directions_turn_clockwise_from_x_upwards(self):
        results = self.example("niemeier_distance_direction")
        p, q = (next(p for p in results["points"] if p["name"] == n) for n in ("Z108", "113"))
        bearing = math.atan2(q["adjusted"]["y"] - p["adjusted"]["y"], q["adjusted"]["x"] - p["adjusted"]["x"])
        a, b = self.screen("Z108"), self.screen("113")
        self.assertAlmostEqual(math.atan2(b[0] - a[0], a[1] - b[1]), bearing, delta=1e-6)

    def test_y_upwards_mirrors_the_plan(self):
        results = self.example("niemeier_distance_direction")
        self.browser.click_on("#turn")
        p, q = (next(p for p in results["points"] if p["name"] == n) for n in ("Z108", "113"))
        a, b = self.screen("Z108"), self.screen("113")
        angle = math.atan2(q["adjusted"]["y"] - p["adjusted"]["y"], q["adjusted"]["x"] - p["adjusted"]["x"])
        self.assertAlmostEqual(math.atan2(a[1] - b[1], b[0] - a[0]), angle, delta=1e-6)

    def test_elevations_show_heights_upwards_and_raised(self):
        results = self.example("total_station_heights")
        p, q = (next(p for p in results["points"] if p["name"] == n)["adjusted"] for n in ("A", "C"))
        self.browser.click_on("#views button:nth-child(3)")
        for raised in (1, 10):
            self.browser.run(f"(() => {{ const s = document.getElementById('raised'); s.value = '{raised}'; s.dispatchEvent(new Event('change')); }})()")
            a, b = self.screen("A"), self.screen("C")
            self.assertAlmostEqual((a[1] - b[1]) / (b[0] - a[0]), raised * (q["z"] - p["z"]) / (q["y"] - p["y"]), delta=1e-6)

    def test_points_are_where_their_coordinates_say(self):
        self.example("strang_borre_distances_free")
        for name in ("P", "1", "2", "3"):
            x, y = (round(c) for c in self.screen(name))
            self.assertEqual(self.pixels(x, y, 1, 1), [0x1B, 0x26, 0x31, 255])

    def test_worse_lines_have_another_colour(self):
        self.example("niemeier_levelling_free")
        colours = {}
        for a, b in (("2", "3"), ("3", "5")):  # normalised 6.1 and 0.9
            p, q = self.screen(a), self.screen(b)
            x, y = (round(0.6 * u + 0.4 * v) for u, v in zip(p, q))
            box = self.pixels(x - 3, y - 3, 7, 7)
            colours[a] = {tuple(box[i:i + 3]) for i in range(0, len(box), 4) if box[i + 3] > 200}
        self.assertIn((0xB3, 0x00, 0x3C), colours["2"])
        self.assertNotIn((0xB3, 0x00, 0x3C), colours["3"])

    def test_the_drawing_for_papers_has_the_ellipses_of_the_results(self):
        results = self.example("niemeier_distance_direction")
        self.browser.call("Page.setDownloadBehavior", behavior="allow", downloadPath=self.folder.name)
        self.browser.click_on("#save-svg")
        path = Path(self.folder.name) / "network.svg"
        for _ in range(100):
            if path.exists() and path.stat().st_size:
                break
            time.sleep(0.05)
        drawing = ElementTree.parse(path).getroot()
        names = [t.text for t in drawing.iter("{http://www.w3.org/2000/svg}text")]
        for point in results["points"]:
            self.assertIn(point["name"], names)
        found = [e for e in drawing.iter("{http://www.w3.org/2000/svg}ellipse") if e.get("rx") != e.get("ry")]
        wanted = [p["ellipse"]["xy"] for p in results["points"] if "ellipse" in p]
        self.assertEqual(len(found), len(wanted))
        for e, w in zip(found, wanted):
            self.assertAlmostEqual(float(e.get("ry")) / float(e.get("rx")), w["semi_minor_axis"] / w["semi_major_axis"], delta=2e-3)
            turned = float(re.search(r"rotate\(([-\d.]+)\)", e.get("transform")).group(1))  # from the right, clockwise
            self.assertAlmostEqual(math.remainder(turned + 90 - math.degrees(w["bearing"]), 180), 0, delta=0.02)

    def test_levelling_gets_a_diagram_without_points_on_one_another(self):
        results = self.example("niemeier_levelling_free")
        places = [self.screen(p["name"]) for p in results["points"]]
        for i, p in enumerate(places):
            for q in places[:i]:
                self.assertGreater(math.dist(p, q), 40)
        self.browser.click_on("#views button:nth-child(2)")
        heights = {p["name"]: p["adjusted"]["z"] for p in results["points"]}
        self.assertEqual(sorted(heights, key=heights.get), sorted(heights, key=lambda n: -self.screen(n)[1]))

    def test_epochs_are_arrows_of_the_movement(self):
        results = self.example("monitoring_wall")
        moves = {p["name"]: p["moves"][0]["by"] for p in results["points"] if "moves" in p}
        self.assertEqual(len(moves), 12)
        for name, by in moves.items():
            wanted = {"A": (0.0015, 0.008, -0.004), "B": (0, 0, 0)}[name[0]]  # the truth, without tilt and turn
            self.assertLess(math.dist((by["x"], by["y"], by["z"]), wanted), 0.006 if name[0] == "A" else 0.001)
        with_arrows = self.ink()
        self.browser.click_on("#layer-moves")
        self.assertLess(self.ink(), with_arrows)

    def compare(self, *epochs, more=(), command="compare"):
        """The page of a comparison, opened, and the same as JSON."""
        out = Path(self.folder.name) / "epochs"
        subprocess.run([PROGRAM, command, *(f"examples/{e}.inp" if "/" not in e else e for e in epochs), *more, "--quiet", "--html", f"{out}.html", "--json", f"{out}.json", "-o", f"{out}.txt"],
                       cwd=HOUSE, check=True)
        self.browser.open(f"{out}.html")
        return json.loads(Path(f"{out}.json").read_text())

    def test_a_comparison_shows_the_epochs_over_one_another(self):
        results = self.compare("dam_may_2026", "dam_november_2026", "dam_may_2027")
        self.assertEqual(self.browser.run("document.querySelector('#verdict p').textContent").split(": ")[1].split(", "), [d["point"] for d in results["left_out"]])
        self.open_table("Shifts")
        self.assertEqual(self.rows(), 2 * len(results["points"]))
        shifts = {(p["name"], str(s["epoch"])): s for p in results["points"] for s in p["shifts"]}
        for name, epoch, dx, a, beyond in zip(*(self.cells(c) for c in ("point", "epoch", "dx", "a", "beyond"))):
            s = shifts[name, epoch]
            self.assertAlmostEqual(float(dx), 1e3 * s["by"]["x"], delta=0.0051)
            self.assertAlmostEqual(float(a), 1e3 * s["confidence_ellipse"]["semi_major_axis"], delta=0.0051)
            self.assertEqual(beyond, "" if s["test"]["passed"] else "*")
        everything = self.ink()
        self.browser.click_on("#epoch-2")
        one = self.ink()
        self.assertLess(one, everything)
        self.browser.click_on("#layer-moves")
        self.assertLess(self.ink(), one)
        self.browser.click(*self.in_window(self.screen("D2")))
        self.assertIn("moved", self.browser.run("document.getElementById('details').textContent"))
        self.assertTrue(self.browser.run("document.querySelector('a[href=\"#spread\"]').hidden"))

    def test_a_comparison_has_a_table_of_strains(self):
        results = self.compare("dam_may_2026", "dam_november_2026", more=("--strain", "P1,P2,P3"))
        self.open_table("Strain")
        strain = results["strains"][0]["epochs"][0]
        self.assertEqual(self.cells("group"), ["P1, P2, P3"])
        value, deviation = map(float, self.cells("exx")[0].split(" ± "))
        self.assertAlmostEqual(value, 1e6 * strain["elements"]["xx"]["value"], delta=0.0051)
        self.assertAlmostEqual(deviation, 1e6 * strain["elements"]["xx"]["standard_deviation"], delta=0.0051)
        self.assertAlmostEqual(float(self.cells("p shape")[0]), strain["strained"]["p"], delta=0.000051)

    # R3 is given 20 mm off; its arrow is the longest and has to be inside.
    def test_control_points_are_shown_in_words_of_their_own(self):
        corners = {"R1": (0, 0), "R2": (0, 300), "R3": (300.02, 300), "R4": (300, 0)}
        rows = "".join(f"{n} {x} {y} fixed\n" for n, (x, y) in corners.items())
        true = {**corners, "R3": (300, 300)}
        lengths = "".join(f"{a} {b} {math.dist(true[a], true[b])} 0.001\n" for a in true for b in true if a < b)
        path = Path(self.folder.name) / "control.inp"
        path.write_text(f"[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\n{rows}'''\ndistances = '''\nfrom to value sigma\n{lengths}'''\n")
        results = self.compare(str(path), more=("--apriori",), command="control")
        words = self.browser.run("document.body.innerText")
        self.assertIn("Differences beyond their limits", words)
        self.assertNotIn("Epochs over", words)
        self.assertNotIn("Each epoch", words)
        reach = self.browser.run("""(() => { const p = document.getElementById('plot').plot, s = p.vectorScale('moves');
            return p.data.points.map(q => { const [x, y] = p.screen(q.index), [u, v] = p.view.vector(q.moves[0].by); return [x + u * s, y - v * s, p.width, p.height]; }); })()""")
        for x, y, width, height in reach:
            self.assertTrue(0 < x < width and 0 < y < height)
        self.assertEqual([d["point"] for d in results["left_out"]], ["R3"])

    def test_zoom_pan_and_the_whole_again(self):
        self.example("niemeier_distance_direction")
        start = self.screen("Z108")
        x, y = self.in_window(start)
        self.browser.mouse("mouseWheel", x, y, deltaX=0, deltaY=-300)
        self.browser.frames()
        for place, before in zip(self.screen("Z108"), start):
            self.assertAlmostEqual(place, before, delta=1)
        self.browser.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
        self.browser.mouse("mouseMoved", x + 60, y + 25, button="left", buttons=1)
        self.browser.mouse("mouseReleased", x + 60, y + 25, button="left", clickCount=1)
        self.browser.frames()
        moved = self.screen("Z108")
        self.assertAlmostEqual(moved[0] - start[0], 60, delta=1)
        self.assertAlmostEqual(moved[1] - start[1], 25, delta=1)
        self.browser.click_on("#all")
        for place, before in zip(self.screen("Z108"), start):
            self.assertAlmostEqual(place, before, delta=1e-6)

    def test_windows_of_another_size_show_as_much(self):
        self.example("niemeier_levelling_free")
        start = [self.screen("1"), self.screen("5")]
        for zoomed in (False, True):
            self.browser.resize(700, 500)
            self.browser.frames(4)
            size = self.browser.run("(() => { const p = document.getElementById('plot').plot; return [p.width, p.height]; })()")
            if not zoomed:
                for name in "123456":
                    for place, most in zip(self.screen(name), size):
                        self.assertTrue(0 < place < most)
            self.browser.resize(1400, 950)
            self.browser.frames(4)
            for place, before in zip([self.screen("1"), self.screen("5")], start):
                for now, then in zip(place, before):
                    self.assertAlmostEqual(now, then, delta=1e-6)
            self.browser.run("document.getElementById('plot').plot.zoom(2)")
            start = [self.screen("1"), self.screen("5")]

    def test_the_keyboard_moves_zooms_and_finds(self):
        self.example("niemeier_levelling_free")
        self.browser.run("document.getElementById('plot').focus()")
        a, b = self.screen("1"), self.screen("5")
        self.browser.key("+")
        self.assertAlmostEqual(math.dist(self.screen("1"), self.screen("5")), 1.4 * math.dist(a, b), delta=0.01)
        before = self.screen("1")
        self.browser.key("ArrowLeft")
        self.assertGreater(self.screen("1")[0], before[0] + 20)
        self.browser.key("n")
        self.assertIn("height difference 2 to 3", self.browser.run("document.getElementById('details').textContent"))
        self.browser.key("/")
        self.assertEqual(self.browser.run("document.activeElement.id"), "search")

    # Choosing

    def test_a_click_on_a_point_shows_it_and_its_observations(self):
        results = self.example("total_station_heights")
        self.browser.click(*self.in_window(self.screen("D")))
        text = self.browser.run("document.getElementById('details').textContent")
        n = sum("D" in (r["from"], r["to"]) for r in results["residuals"])
        self.assertIn(f"{n} observations", text)
        d = next(p for p in results["points"] if p["name"] == "D")
        self.assertIn(f"{d['adjusted']['x']:.4f}", text)

    def test_a_click_on_a_line_shows_the_observation_and_its_line_in_the_file(self):
        self.example("ghilani_levelling")
        a, b = self.screen("B"), self.screen("C")
        self.browser.click(*self.in_window([0.5 * (u + v) for u, v in zip(a, b)]))
        self.assertEqual(self.browser.run("document.getElementById('source').textContent"), "B     C    5.360   0.004")
        self.assertIn("line 21", self.browser.run("document.getElementById('details').textContent"))
        self.assertEqual(self.browser.run("document.querySelector('.window:not([hidden]) tr[aria-selected=true]').textContent").replace(" ", "")[:20],
                         "heightdifferenceBC5.3600"[:20])

    def test_points_are_found_by_their_names(self):
        self.example("photo_block")
        self.browser.click_on("#search")
        self.browser.type("p2")
        offered = self.browser.run("[...document.querySelectorAll('#found li')].map(l => l.textContent)")
        self.assertEqual(offered, [f"P{n}" for n in range(20, 30)])
        self.browser.type("3")
        self.browser.key("Enter")
        size = self.browser.run("(() => { const p = document.getElementById('plot').plot; return [p.width / 2, p.height / 2]; })()")
        for place, middle in zip(self.screen("P23"), size):
            self.assertAlmostEqual(place, middle, delta=1)
        self.assertTrue(self.browser.run("document.getElementById('details').textContent").startswith("P23"))

    # Tables

    def test_tables_sort_by_number_and_by_name(self):
        results = self.example("monitoring_wall")
        self.open_table("Observations")
        self.sort("w")
        self.sort("w")
        size = sorted((abs(r["normalised"]) for r in results["residuals"] if "normalised" in r), reverse=True)
        for shown, wanted in zip(self.cells("w"), size):
            self.assertAlmostEqual(abs(float(shown)), wanted, delta=0.0051)
        self.sort("from")
        names = self.cells("from")
        self.assertEqual(names, sorted(names))

    def test_filters_leave_the_rows_that_pass(self):
        results = self.example("monitoring_wall")["residuals"]
        self.open_table("Observations")
        tests = {
            "w>2": lambda r: round(abs(r.get("normalised", 0)), 2) > 2,
            "from=P1-1": lambda r: r["from"] == "P1-1",
            "distance p2 w<=1": lambda r: r["kind"] == "distance" and "P2" in r["from"] + " " + r["to"] and round(abs(r["normalised"]), 2) <= 1,
            "nothing-has-this": lambda r: False,
            " ": lambda r: True,
        }
        for text, holds in tests.items():
            with self.subTest(text):
                self.filter(text)
                self.assertEqual(self.rows(), sum(map(holds, results)))

    def test_only_rows_in_sight_are_elements_and_scrolling_brings_the_others(self):
        results = self.example("photo_block")["residuals"]
        self.open_table("Observations")
        count = "document.querySelectorAll('.window:not([hidden]) tbody tr').length"
        self.assertLess(self.browser.run(count), 70)
        self.browser.run("(() => { const w = document.querySelector('.window:not([hidden])'); w.scrollTop = w.scrollHeight; })()")
        self.browser.frames(3)
        self.assertEqual(self.cells("to")[-1], results[-1]["to"])
        self.assertLess(self.browser.run(count), 70)

    def test_a_row_shows_its_line_in_the_plot(self):
        self.example("total_station_heights")
        self.open_table("Observations")
        self.browser.click_on(".window:not([hidden]) tbody tr:nth-child(5)")
        chosen = self.browser.run("(() => { const p = document.getElementById('plot').plot, l = p.chosen.line; return [p.data.points[l.a].name, p.data.points[l.b].name]; })()")
        self.assertEqual(chosen, [self.cells("from")[3], self.cells("to")[3]])

    # The rest

    def test_the_histogram_counts_every_residual(self):
        results = self.example("monitoring_wall")["residuals"]
        self.browser.run("document.getElementById('spread').scrollIntoView({behavior: 'instant'})")
        self.browser.wait("document.querySelector('#histogram rect') !== null")
        counts = self.browser.run("[...document.querySelectorAll('#histogram rect title')].map(t => Number(t.textContent.split(': ')[1]))")
        self.assertEqual(sum(counts), len(results))
        above = self.browser.run("[...document.querySelectorAll('#histogram rect title')].map(t => t.textContent).filter(t => !t.startsWith('-')).reduce((n, t) => n + Number(t.split(': ')[1]), 0)")
        self.assertEqual(above, sum(r["normalised"] >= 0 for r in results))

    def test_light_dark_and_print(self):
        self.browser.dark()
        self.example("total_station_heights")
        paper = "getComputedStyle(document.body).backgroundColor"
        self.assertEqual(self.browser.run(paper), "rgb(18, 24, 31)")
        self.browser.click_on("#theme")
        self.assertEqual(self.browser.run(paper), "rgb(255, 255, 255)")
        self.browser.click_on("#theme")
        self.browser.run("window.dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(self.browser.run(paper), "rgb(255, 255, 255)")
        self.assertEqual(self.browser.run("document.querySelectorAll('.printed tbody tr').length"), 7 + 54 + 3 + 3)
        self.browser.run("window.dispatchEvent(new Event('afterprint'))")
        self.assertEqual(self.browser.run(paper), "rgb(18, 24, 31)")

    def test_narrow_windows_have_no_sidewards_scrolling(self):
        self.browser.resize(380, 800, mobile=True)
        self.example("total_station_heights")
        self.assertLessEqual(self.browser.run("document.documentElement.scrollWidth"), 380)
        self.assertGreater(self.ink(), 1000)


if __name__ == "__main__":
    if len(sys.argv) > 1 and not sys.argv[1].startswith("-") and "." not in sys.argv[1][:5]:
        PROGRAM = str(Path(sys.argv.pop(1)).resolve())
    else:
        PROGRAM = str(HOUSE / PROGRAM)
    unittest.main()
