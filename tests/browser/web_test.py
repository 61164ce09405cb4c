"""The page that runs the program in a browser: web_test.py PAGE PROGRAM. Its results are those of the program on this machine.
Needs chromium; opens files only."""

import json
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from chromium import Chromium

HOUSE = Path(__file__).resolve().parents[2]
PAGE, PROGRAM = HOUSE / "build/wasm/vorn.html", HOUSE / "build/release/vorn"
NEAR = 1e-9

LEVELLING = """[run]
dimension = 1
[tables]
targets = '''
name z code
A 100 fixed
B 101 free
'''
height_differences = '''
from to value sigma
A B 1.001 0.001
A B 1.003 0.001
'''
"""


def differences(mine, theirs, path=""):
    """Where two results differ: numbers by more than 1e-9, of themselves where they are large."""
    if isinstance(mine, dict) and isinstance(theirs, dict):
        if mine.keys() != theirs.keys():
            return [f"{path}: keys {sorted(mine.keys() ^ theirs.keys())}"]
        return [d for key in mine for d in differences(mine[key], theirs[key], f"{path}.{key}")]
    if isinstance(mine, list) and isinstance(theirs, list):
        if len(mine) != len(theirs):
            return [f"{path}: {len(mine)} and {len(theirs)} entries"]
        return [d for i, (a, b) in enumerate(zip(mine, theirs)) for d in differences(a, b, f"{path}[{i}]")]
    number = (int, float)
    if isinstance(mine, number) and isinstance(theirs, number) and not isinstance(mine, bool):
        near = abs(mine - theirs) <= NEAR * max(1.0, abs(mine))
    else:
        near = mine == theirs
    return [] if near else [f"{path}: {mine} and {theirs}"]


class Web(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.browser = Chromium(1300, 1000).__enter__()
        cls.browser.call("Page.setDownloadBehavior", behavior="allow", downloadPath=cls.folder.name)

    @classmethod
    def tearDownClass(cls):
        cls.browser.__exit__()
        cls.folder.cleanup()

    def setUp(self):
        self.browser.open(PAGE)

    def tearDown(self):
        self.assertEqual(self.browser.complaints, [])
        self.assertEqual([r for r in self.browser.requests if not r.startswith(("file:", "data:", "blob:", "about:"))], [])
        self.assertEqual(len([r for r in self.browser.requests if r.startswith("file:")]), 1)

    def status(self):
        """What the page says when the run has ended."""
        self.browser.wait("document.getElementById('stop').disabled && document.getElementById('status').textContent !== ''", 120)
        return self.browser.run("document.getElementById('status').textContent")

    def messages(self):
        return self.browser.run("document.getElementById('messages').textContent")

    def choose(self, example):
        self.browser.run(f"(() => {{ const e = document.getElementById('example'); e.value = {json.dumps(example)}; e.dispatchEvent(new Event('change')); }})()")
        return self.status()

    def drop(self, **files):
        """Drops files on the page; _ in a name stands for its point."""
        script = "".join(f"t.items.add(new File([{json.dumps(text)}], {json.dumps(name.replace('_', '.'))}));" for name, text in files.items())
        self.browser.run(f"(() => {{ const t = new DataTransfer(); {script} document.dispatchEvent(new DragEvent('drop', {{ dataTransfer: t, cancelable: true }})); }})()")
        return self.status()

    def saved(self, path):
        """A file that the run wrote, as the user saves it."""
        target = Path(self.folder.name) / Path(path).name
        target.unlink(missing_ok=True)
        self.browser.click_on(f"#outputs a[data-path='{path}']")
        for _ in range(200):
            if target.exists() and target.stat().st_size:
                return target.read_text()
            time.sleep(0.05)
        raise TimeoutError(path)

    def in_page(self, script):
        self.browser.wait("document.getElementById('result').contentDocument && document.getElementById('result').contentDocument.getElementById('plot') && document.getElementById('result').contentDocument.getElementById('plot').plot")
        return self.browser.run(f"(({{ document }}) => {script})(document.getElementById('result').contentWindow)")

    def test_every_example_has_the_results_of_the_program_on_this_machine(self):
        examples = self.browser.run("[...document.getElementById('example').options].map(o => o.value).filter(v => v)")
        wanted = [p.name for p in (HOUSE / "examples").glob("*.inp") if "\n[crs]" not in p.read_text()]
        self.assertEqual(sorted(examples), sorted(wanted))
        for name in examples:
            with self.subTest(name):
                said = self.choose(name)
                native = Path(self.folder.name) / "native.json"
                subprocess.run([PROGRAM, "adjust", f"./{name}", "--quiet", "--json", native, "-o", "/dev/null"], cwd=HOUSE / "examples", check=True)
                self.assertEqual(said, f"{name}: adjusted", self.messages())
                self.assertEqual(differences(json.loads(self.saved("results.json")), json.loads(native.read_text())), [])
                self.assertEqual(self.in_page("document.querySelectorAll('#verdict p').length > 0"), True)

    def test_a_dropped_file_is_adjusted_and_its_page_shown(self):
        self.assertEqual(self.drop(line_inp=LEVELLING), "line.inp: adjusted")
        point = json.loads(self.saved("results.json"))["points"][1]
        self.assertAlmostEqual(point["adjusted"]["z"], 101.002, delta=1e-9)
        self.assertIn("101.0020", self.in_page("document.getElementById('tables').textContent"))
        self.assertIn("Verdict", self.saved("report.txt"))

    def test_files_beside_the_network_are_found(self):
        table = "from to value sigma\nA B 1.002 0.001\nA B 1.004 0.001\n"
        network = LEVELLING[:LEVELLING.index("height_differences")] + 'height_differences = "rows.txt"\n'
        self.drop(net_inp=network, rows_txt=table)
        self.assertAlmostEqual(json.loads(self.saved("results.json"))["points"][1]["adjusted"]["z"], 101.003, delta=1e-9)

    def test_faults_are_told_with_their_lines(self):
        self.assertIn("faults", self.drop(bad_inp=LEVELLING.replace("1.001", "1.0.1")))
        self.assertIn("bad.inp:9", self.messages())
        self.assertTrue(self.browser.run("document.getElementById('result').hidden"))

    def test_formats_in_xml_are_said_to_be_missing(self):
        self.drop(net_xml="<?xml version='1.0'?><gama-local></gama-local>")
        self.assertIn("XML", self.messages())

    def test_options_are_those_of_the_command_line(self):
        self.browser.click_on("#options")
        self.browser.type("--csv tables --solver simplex")
        self.drop(line_inp=LEVELLING)
        self.assertEqual(json.loads(self.saved("results.json"))["solver"], "simplex")
        self.assertIn("B,", self.saved("tables/points.csv"))

    def test_a_run_can_be_stopped(self):
        self.browser.run("""(() => { const e = document.getElementById('example'); e.value = 'photo_block.inp'; e.dispatchEvent(new Event('change'));
            document.getElementById('stop').click(); })()""")
        self.assertEqual(self.status(), "stopped")
        self.assertEqual(self.choose("ghilani_levelling.inp"), "ghilani_levelling.inp: adjusted")

    def test_narrow_windows_have_no_sidewards_scrolling(self):
        self.browser.resize(380, 800, mobile=True)
        self.choose("ghilani_levelling.inp")
        self.assertLessEqual(self.browser.run("document.documentElement.scrollWidth"), 380)
        self.browser.resize(1300, 1000)


if __name__ == "__main__":
    if len(sys.argv) > 2 and Path(sys.argv[1]).exists():
        PAGE, PROGRAM = (Path(sys.argv.pop(1)).resolve() for _ in range(2))
    unittest.main()
