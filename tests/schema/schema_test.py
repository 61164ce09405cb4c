"""The JSON of every example, by every solver and mode that takes it, against the schema: schema_test.py PROGRAM"""

import copy
import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import jsonschema

HOUSE = Path(__file__).resolve().parents[2]
SCHEMAS = {name: json.loads((HOUSE / f"share/vorn-{name}.schema.json").read_text()) for name in ("results-2", "check-1")}
VALIDATOR, CHECKS = (jsonschema.Draft202012Validator(schema) for schema in SCHEMAS.values())
PROGRAM = str(HOUSE / "build/release/vorn")


def results(command, network, *more):
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run([PROGRAM, command, str(network), "-C", folder, "--json", "-", *more], cwd=HOUSE, capture_output=True, text=True)
        return json.loads(run.stdout)


class Schema(unittest.TestCase):
    def test_is_a_schema_itself(self):
        for schema in SCHEMAS.values():
            jsonschema.Draft202012Validator.check_schema(schema)

    def test_holds_for_every_example(self):
        for network in sorted((HOUSE / "examples").glob("*.inp")):
            for more in ((), ("--solver", "compact"), ("--solver", "sparse"), ("--solver", "sparse", "--mode", "propagation"), ("--solver", "sparse", "--mode", "solution")):
                with self.subTest(network.stem, options=more):
                    VALIDATOR.validate(results("adjust", network, *more))

    def test_holds_for_checks(self):
        for network in sorted((HOUSE / "examples").glob("*.inp")):
            for more in ((), ("--solver", "compact")):
                with self.subTest(network.stem, options=more):
                    said = results("check", network, *more)
                    CHECKS.validate(said)
                    if more and any("choose the solver sparse" in word for word in said["words"]):
                        self.assertEqual(said["verdict"], "cannot be adjusted")
                        continue
                    self.assertIn(said["verdict"], ("can be adjusted", "only the adjustment shows"))

    def test_a_check_names_the_place_of_every_fault(self):
        with tempfile.TemporaryDirectory() as folder:
            network = Path(folder) / "net.inp"
            network.write_text("[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 1.0 fixed\nB x free\n'''\n"
                               "height_differences = '''\nfrom to value sigma\nA C 1 0.001\n'''\n")
            said = results("check", network)
        CHECKS.validate(said)
        self.assertEqual(said["verdict"], "bad input")
        self.assertEqual([(f["line"], f["column"]) for f in said["faults"]], [(7, 3), (11, 3)])
        self.assertEqual(said["fault_count"], 2)

    def test_a_check_says_why_a_network_cannot_be_adjusted(self):
        with tempfile.TemporaryDirectory() as folder:
            network = Path(folder) / "net.inp"
            network.write_text("[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 1 fixed\nB 2 free\nC 3 free\nD 4 free\n'''\n"
                               "height_differences = '''\nfrom to value sigma\nA B 1 0.001\nC D 1 0.001\n'''\n")
            said = results("check", network)
        CHECKS.validate(said)
        self.assertEqual(said["verdict"], "cannot be adjusted")
        self.assertTrue(said["words"])

    def test_refuses_what_is_wrong(self):
        right = results("adjust", HOUSE / "examples/niemeier_distance_direction.inp")
        wrongs = {
            "another schema": lambda r: r.update(schema=3),
            "a key that nobody knows": lambda r: r.update(sigma=1.0),
            "a text for a number": lambda r: r["residuals"][0].update(sigma="0.005"),
            "a missing key": lambda r: r["points"][0].pop("name"),
            "an unknown code": lambda r: r["points"][0]["code"].update(x="held"),
            "a negative axis": lambda r: r["points"][0]["ellipse"]["xy"].update(semi_minor_axis=-1.0),
            "an unknown axis": lambda r: r["points"][0]["adjusted"].update(h=1.0),
        }
        for name, spoil in wrongs.items():
            with self.subTest(name):
                wrong = copy.deepcopy(right)
                spoil(wrong)
                self.assertFalse(VALIDATOR.is_valid(wrong))


if __name__ == "__main__":
    if len(sys.argv) > 1 and not sys.argv[1].startswith("-"):
        PROGRAM = str(Path(sys.argv.pop(1)).resolve())
    unittest.main()
