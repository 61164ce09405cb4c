"""The package vorn as people use it. Needs the package on the path, NumPy, pandas and matplotlib."""

import concurrent.futures
import doctest
import importlib
import os
import signal
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import numpy as np
import pandas

import vorn

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
FREE = EXAMPLES / "strang_borre_distances_free.inp"

# A levelled triangle with a misclosure of 3 mm: cofactors sigma^2 / 3 [2 1; 1 2], variance factor 3.
POINTS = {"name": ["A", "B", "C"], "z": [100.0, 101.2, 103.5], "code": ["fixed", "free", "free"]}
LINES = {"from": ["A", "B", "C"], "to": ["B", "C", "A"], "value": [1.234, 2.221, -3.452], "sigma": 0.001}


def triangle(points=POINTS, lines=LINES, **more):
    return vorn.Network(dimension=1, targets=points, height_differences=lines, **more)


def tangle(points, lines, seed=1):
    """Heights with height differences between points drawn by chance, which fills the factor."""
    random = np.random.default_rng(seed)
    z = random.normal(100, 10, points)
    names = np.array([f"P{i}" for i in range(points)])
    ring = np.arange(points)
    first = np.concatenate((ring, random.integers(0, points, lines - points)))
    step = np.concatenate((np.ones(points, int), random.integers(2, points - 1, lines - points)))
    second = (first + step) % points
    value = z[second] - z[first] + random.normal(0, 0.001, lines)
    code = np.where(ring == 0, "fixed", "free")
    return vorn.Network(dimension=1, targets={"name": names, "z": z, "code": code},
                        height_differences={"from": names[first], "to": names[second], "value": value, "sigma": 0.001})


class Comparisons(unittest.TestCase):
    """Levelled rings of three points, twice the same but for B, which rises by 20 mm."""

    lines = {"from": ["A", "B", "C", "A"], "to": ["B", "C", "A", "B"], "sigma": 0.001}

    def epoch(self, rise, **more):
        points = {"name": ["A", "B", "C"], "z": [100.0, 101.0, 102.0]}
        value = [1.0 + rise, 1.0 - rise, -2.0, 1.0 + rise]
        return vorn.Network(dimension=1, targets=points, height_differences=dict(self.lines, value=value), **more)

    def test_find_what_moved(self):
        c = vorn.compare(self.epoch(0.0), self.epoch(0.02), apriori=True)
        self.assertEqual((c.moved, c.stable, c.congruent), (["B"], ["A", "C"], False))
        self.assertEqual(c.variance_factor, 1.0)
        self.assertEqual(list(c.shifts["name"]), ["A", "B", "C"])
        np.testing.assert_allclose(c.shifts["dz"], [0.0, 0.02, 0.0], atol=1e-12)
        self.assertTrue(np.isnan(c.shifts["dx"]).all())
        self.assertEqual(list(c.shifts["significant"]), [False, True, False])
        # A-B twice, B-C, C-A with 1 mm each; B against the mean of A and C, in both epochs
        normal, against = np.array([[3.0, -2, -1], [-2, 3, -1], [-1, -1, 2]]), np.array([-0.5, 1, -0.5])
        self.assertAlmostEqual(c.shifts["sz"][1], 1e-3 * np.sqrt(2 * against @ np.linalg.pinv(normal) @ against), places=9)
        self.assertIn("B", c.report)
        self.assertEqual(vorn.compare(self.epoch(0.0), self.epoch(0.0), apriori=True).moved, [])

    def test_give_velocities_of_dated_epochs(self):
        run = {"2026-01-01": 0.0, "2027-01-01": 0.01, "2028-01-01": 0.02}
        c = vorn.compare(*(self.epoch(x) for x in run.values()), dates=run, apriori=True)
        b = list(c.velocities["name"]).index("B")
        self.assertAlmostEqual(c.velocities["vz"][b], 0.01, places=4)

    def test_say_what_is_wrong(self):
        with self.assertRaisesRegex(vorn.AdjustmentError, "one epoch cannot be compared"):
            vorn.compare(self.epoch(0.0))
        with self.assertRaisesRegex(vorn.AdjustmentError, "not all epochs have in use: X"):
            vorn.compare(self.epoch(0.0), self.epoch(0.0), points=["X"])


class Results(unittest.TestCase):
    def test_are_the_published_ones(self):
        result = vorn.adjust(FREE)
        points = result.points
        self.assertEqual(list(points["name"]), ["P", "1", "2", "3"])
        np.testing.assert_allclose(points["x"], [170.71227, 170.70320, 99.99121, 241.43332], atol=6e-6)
        np.testing.assert_allclose(points["y"], [170.71853, 270.72133, 99.99714, 99.98300], atol=6e-6)
        self.assertNotIn("z", points)
        self.assertEqual(result.degrees_of_freedom, 1)
        self.assertTrue(result.variance_test)

    def test_are_those_of_the_closed_formula(self):
        result = triangle().adjust(covariances=True)
        self.assertAlmostEqual(result.sigma, np.sqrt(3.0), 12)
        np.testing.assert_allclose(result.points["sz"][1:], np.sqrt(2e-6), rtol=1e-9)
        heights = result.covariance_matrix[2::3, 2::3]
        np.testing.assert_allclose(heights, [[0, 0, 0], [0, 2e-6, 1e-6], [0, 1e-6, 2e-6]], atol=1e-17)
        np.testing.assert_array_equal(result.covariance("B", "C"), result.covariance("C", "B").T)
        np.testing.assert_array_equal(result.covariance("B"), result.covariance("B", "B"))
        tested = result.residuals
        delta = 3.290526731 + 0.841621234  # normal limits of the level 0.001 and of the power 0.80
        np.testing.assert_allclose(tested["detectable"], 0.001 * delta * np.sqrt(3.0), rtol=1e-8)
        np.testing.assert_allclose(tested["bias_to_noise"], delta * np.sqrt(2.0), rtol=1e-8)
        np.testing.assert_allclose(tested["shift"], tested["detectable"] * np.array([2, 1, 2]) / 3, rtol=1e-8)
        np.testing.assert_allclose(tested["p_value"], 0.0832645, atol=1e-7)
        self.assertTrue(tested["checked"].all())

    def test_are_contiguous_arrays_of_numpy(self):
        result = vorn.adjust(FREE)
        for table, rows in ((result.points, 4), (result.residuals, 6)):
            self.assertEqual(table.rows, rows)
            for column in table.values():
                self.assertTrue(column.flags.c_contiguous)
                self.assertEqual(column.shape, (rows,))
        self.assertEqual(result.points["x"].dtype, float)
        self.assertEqual(result.residuals["suspicious"].dtype, bool)

    def test_stay_when_the_result_is_gone(self):
        x = vorn.adjust(FREE).points["x"]
        for _ in range(3):
            vorn.adjust(FREE)
        self.assertAlmostEqual(x[0], 170.71227, 5)

    def test_are_tables_of_pandas(self):
        table = vorn.adjust(FREE).residuals.to_pandas()
        self.assertEqual(list(table.loc[table["to"] == "P", "value"]), [100.01, 100.02, 100.03])
        self.assertIn("<table", vorn.adjust(FREE).points._repr_html_())

    def test_name_the_rows_that_residuals_come_from(self):
        residuals = triangle().adjust().residuals
        self.assertEqual(set(residuals["file"]), {"table height_differences"})
        np.testing.assert_array_equal(np.array(LINES["value"])[residuals["line"] - 1], residuals["value"])

    def test_say_what_was_not_asked_for(self):
        result = triangle().adjust(covariances=["B"])
        self.assertEqual(result.report, "")
        self.assertIn("Verdict", triangle().adjust(report=True).report)
        with self.assertRaisesRegex(KeyError, "no covariances of 'C'"):
            result.covariance("B", "C")
        with self.assertRaisesRegex(ValueError, "no point 'X'"):
            triangle().adjust(covariances=["B", "X"])

    def test_have_the_json_of_the_program(self):
        result = triangle().adjust()
        self.assertEqual(result.data["points"][1]["name"], "B")
        self.assertAlmostEqual(result.data["points"][1]["adjusted"]["z"], result.points["z"][1], 12)

    def test_are_pages_in_a_notebook(self):
        shown = vorn.adjust(FREE)._repr_html_()
        self.assertTrue(shown.startswith("<iframe"))
        self.assertIn("&lt;!DOCTYPE html&gt;", shown)
        self.assertIn("100.010", shown)  # the line of the file stands in it
        self.assertIn("srcdoc", triangle().adjust()._repr_html_())


class Arrays(unittest.TestCase):
    def test_may_be_of_pandas_and_structured(self):
        wanted = triangle().adjust().points["z"]
        frame = pandas.DataFrame(POINTS)
        structured = np.rec.fromarrays([LINES["from"], LINES["to"], LINES["value"], [0.001] * 3],
                                       names="from,to,value,sigma")
        np.testing.assert_array_equal(triangle(frame, structured).adjust().points["z"], wanted)
        with_unknown = pandas.DataFrame({"name": ["A", "B", "C"], "z": pandas.array([100, None, 103.5], "Float64"),
                                         "code": pandas.Categorical(["fixed", "free", "free"])})
        np.testing.assert_allclose(triangle(with_unknown).adjust().points["z"], wanted, atol=1e-12)

    def test_may_have_whole_numbers_as_names_and_answers(self):
        lines = {"from": np.array([1, 2, 3]), "to": [2, 3, 1], "value": LINES["value"], "sigma": 0.001,
                 "use": np.array([True, True, False])}
        result = triangle({**POINTS, "name": range(1, 4)}, lines).adjust()
        self.assertEqual(list(result.points["name"]), ["1", "2", "3"])
        self.assertEqual(result.residuals.rows, 2)

    def test_may_have_strides_and_other_types(self):
        z = np.array([[100.0, 101.2, 103.5], [0, 0, 0]], ">f8", order="F")[0]
        self.assertFalse(z.flags.c_contiguous)
        np.testing.assert_array_equal(triangle({**POINTS, "z": z}).adjust().points["z"], triangle().adjust().points["z"])

    def test_keep_names_of_any_script(self):
        points = {**POINTS, "name": ["Höhe 1", "点", "C"]}
        lines = {**LINES, "from": ["Höhe 1", "点", "C"], "to": ["点", "C", "Höhe 1"]}
        network = triangle(points, lines, title='Der "Ring"\\')
        self.assertEqual(network.points, points["name"])
        self.assertEqual(network.title, 'Der "Ring"\\')

    def test_take_settings_and_covariances(self):
        lines = {"from": "A", "to": ["B", "B"], "value": [1230.0, 1234.0], "covariance": "week 1"}
        network = triangle({**POINTS, "z": [100000.0, 101000.0, 103500.0], "code": ["fixed", "free", "fixed"]}, lines,
                           settings={"units": {"length": "mm"}, "earth": {"origin": [0, 0, 0]}},
                           covariances={"week 1": np.array([[1.0, 0.5], [0.5, 2.0]])})
        self.assertAlmostEqual(network.adjust().points["z"][1], 100 + (1.5 * 1.230 + 0.5 * 1.234) / 2, 12)

    def test_are_refused_with_table_and_row(self):
        with self.assertRaises(vorn.InputError) as caught:
            triangle(lines={**LINES, "to": ["B", "D", "A"]})
        error = caught.exception
        self.assertEqual((error.file, error.line), ("table height_differences", 2))
        self.assertIn('unknown point "D"', error.sentence)
        self.assertIsInstance(error, ValueError)
        for lines, wanted in (({**LINES, "value": [1.0, 2.0]}, "column value has 2 rows"),
                              ({**LINES, "value": [1.0, np.inf, 2.0]}, "height_differences:2:"),
                              ({**LINES, "valeu": 1.0}, "valeu")):  # fmt: skip
            with self.assertRaisesRegex(vorn.InputError, wanted):
                triangle(lines=lines)

    def test_of_wrong_shape_or_type_are_type_errors(self):
        for lines in ({**LINES, "value": np.zeros((3, 2))}, {**LINES, "value": [1j, 2j, 3j]},
                      {**LINES, "value": [object()] * 3}):  # fmt: skip
            with self.assertRaises(TypeError):
                triangle(lines=lines)
        with self.assertRaisesRegex(TypeError, "no table"):
            vorn.Network(dimension=1, points=POINTS)
        with self.assertRaisesRegex(TypeError, "square"):
            triangle(covariances={"a": [1.0, 2.0]})
        with self.assertRaisesRegex(TypeError, "list of names"):
            triangle().adjust(covariances="B")

    def test_meet_no_loop_of_python(self):
        """The lines of the package that run are as many for 3 rows as for 3000."""

        def lines_run(network_rows):
            count = 0

            def trace(frame, event, arg):
                nonlocal count
                inside = Path(frame.f_code.co_filename).parent == Path(vorn.__file__).parent
                count += inside and event == "line"
                return trace if inside else None

            sys.settrace(trace)
            try:
                result = tangle(network_rows, 2 * network_rows).adjust(covariances=["P1"])
                result.points, result.residuals, result.covariance("P1"), result.page()
            finally:
                sys.settrace(None)
            return count

        self.assertEqual(lines_run(10), lines_run(3000))


class Reading(unittest.TestCase):
    def test_takes_paths_and_texts(self):
        network = vorn.read(FREE)
        self.assertEqual(network.points, vorn.read(str(FREE)).points)
        self.assertEqual(network.points, vorn.read(FREE.read_text()).points)
        self.assertIn("4 points", repr(network))

    def test_takes_foreign_files_with_notes(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "Höhe.gkf"
            path.write_text(
                "<gama-local><network><points-observations>\n"
                "<point id='A' z='100' fix='z'/><point id='B' adj='z'/><height-differences>\n"
                "<dh from='A' to='B' val='1.25' stdev='2'/>\n<dh from='A' to='C' val='1.25' stdev='2'/>\n"
                "</height-differences></points-observations></network></gama-local>\n")
            network = vorn.read(path)
            self.assertTrue(any("Höhe.gkf:4: " in note for note in network.notes), network.notes)
            residuals = network.adjust().residuals
        self.assertEqual((residuals["file"][0], residuals["line"][0]), (str(path), 3))

    def test_names_file_line_and_column(self):
        with self.assertRaises(vorn.InputError) as caught:
            vorn.read(FREE.read_text().replace("dimension = 2", "dimension = 7"), name="my.inp")
        fault = caught.exception.faults[-1]
        self.assertEqual((fault.file, fault.line > 0, fault.column), ("my.inp", True, 13))
        self.assertIn("dimension", fault.sentence)
        self.assertIn(fault.text, str(caught.exception))

    def test_says_why_a_network_is_not_adjusted(self):
        loose = triangle({**POINTS, "code": "free"}, {k: v if k == "sigma" else v[:1] for k, v in LINES.items()})
        with self.assertRaises(vorn.AdjustmentError) as caught:
            loose.adjust()
        self.assertIn("C", caught.exception.sentence)


class Running(unittest.TestCase):
    def test_tells_its_progress_in_the_calling_thread(self):
        told = []
        tangle(300, 900).adjust(progress=lambda step, share: told.append((step, share, threading.get_ident())))
        self.assertIn("factor", [step for step, _, _ in told])
        self.assertTrue(all(0 <= share <= 1 for _, share, _ in told))
        self.assertEqual({ident for _, _, ident in told}, {threading.get_ident()})

    def test_ends_with_what_progress_raises(self):
        def stop(step, share):
            raise RuntimeError("enough")

        with self.assertRaisesRegex(RuntimeError, "enough"):
            tangle(300, 900).adjust(progress=stop)
        self.assertGreater(tangle(300, 900).adjust().sigma, 0.5)

    def test_ends_with_ctrl_c(self):
        signal.signal(signal.SIGINT, signal.default_int_handler)  # ignored where a shell runs this in the background
        network = tangle(4000, 12000)
        timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
        timer.start()
        start = time.monotonic()
        with self.assertRaises(KeyboardInterrupt):
            for _ in range(100):
                network.adjust()
        timer.join()
        print(f"interrupted after {time.monotonic() - start - 0.2:.2f} s", file=sys.stderr)

    def test_leaves_the_interpreter_to_other_threads(self):
        network = tangle(1500, 4500)
        with concurrent.futures.ThreadPoolExecutor(1) as pool:
            run = pool.submit(network.adjust)
            turns = 0
            while not run.done():
                turns += 1
                time.sleep(0.001)
        self.assertGreater(turns, 20)

    def test_gives_the_same_in_many_threads(self):
        network = tangle(200, 600)
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            runs = list(pool.map(lambda _: network.adjust(progress=lambda s, x: None).points["z"], range(32)))
        for z in runs:
            np.testing.assert_array_equal(z, runs[0])


class Simulation(unittest.TestCase):
    def test_recovers_coordinates_within_their_precision(self):
        network = vorn.read(EXAMPLES / "total_station_heights.inp")
        truth = network.simulate(noise=0).adjust().points
        free = truth["code_x"] == "free"
        drawn = np.array([vorn.simulate(network, seed=seed).adjust().points["x"][free] for seed in range(100)])
        result = network.adjust()
        errors = (drawn - truth["x"][free]) / (result.points["sx"][free] / result.sigma)
        self.assertTrue(np.all(np.abs(np.mean(errors**2, axis=0) - 1) < 4 * np.sqrt(2 / 100)))
        self.assertTrue(np.all(np.abs(np.mean(errors, axis=0)) < 4 / np.sqrt(100)))

    def test_is_the_same_for_a_seed(self):
        values = [vorn.simulate(FREE, seed=seed).adjust().residuals["value"] for seed in (1, 1, 2)]
        np.testing.assert_array_equal(values[0], values[1])
        self.assertTrue(np.any(values[0] != values[2]))

    def test_refuses_what_it_cannot_draw(self):
        with self.assertRaisesRegex(vorn.InputError, "image coordinates"):
            vorn.simulate(EXAMPLES / "photo_block.inp")


class Plot(unittest.TestCase):
    def test_shows_points_sights_and_ellipses(self):
        ax = vorn.adjust(FREE).plot()
        lines, suspicious, ellipses = ax.collections[:3]
        self.assertEqual((len(lines.get_segments()), len(suspicious.get_segments())), (6, 0))
        self.assertEqual(len(ellipses.get_offsets()), 4)
        self.assertEqual(sorted(text.get_text() for text in ax.texts), ["1", "2", "3", "P"])
        np.testing.assert_allclose(ellipses.get_offsets()[0], [170.71853, 170.71227], atol=1e-5)  # y, x
        ax.figure.canvas.draw()

    def test_turns_ellipses_with_their_bearings(self):
        """A point that one short sight to the north holds badly to the east: the longer axis points to the right."""
        network = vorn.Network(
            dimension=2,
            targets={"name": ["N", "E", "P"], "x": [10.0, 0.0, 0.0], "y": [0.0, 10.0, 0.0], "code": ["fixed", "fixed", "free"]},
            distances={"from": "P", "to": ["N", "E", "N"], "value": [10.0, 10.0, 10.001], "sigma": [0.001, 0.005, 0.001]})
        ax = network.adjust().plot(magnification=1000)
        ellipses = ax.collections[2]
        ax.set_xlim(-20, 20), ax.set_ylim(-20, 20)
        ax.figure.canvas.draw()
        width, height = (np.ptp(ellipses.get_paths()[0].transformed(
            matplotlib.transforms.Affine2D(ellipses.get_transforms()[0])).vertices, axis=0))
        self.assertGreater(width, 5 * height)

    def test_takes_axes_and_heights(self):
        figure, ax = matplotlib.pyplot.subplots()
        self.assertIs(triangle().adjust().plot(ax), ax)
        self.assertAlmostEqual(ax.patches[1].get_height(), 1000 * np.sqrt(2e-6), 9)

    def test_of_three_dimensions_shows_the_plan(self):
        ax = vorn.adjust(EXAMPLES / "total_station_heights.inp").plot()
        ax.figure.canvas.draw()


def load_tests(loader, tests, pattern):
    for module in ("vorn", "vorn._compare", "vorn._errors", "vorn._network", "vorn._result"):
        tests.addTests(doctest.DocTestSuite(importlib.import_module(module)))
    return tests


if __name__ == "__main__":
    unittest.main()
