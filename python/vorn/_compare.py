"""Epochs of a network compared."""

from __future__ import annotations

import json
from functools import cached_property
from typing import Any, Dict, Iterable, List, Optional, Sequence, Union

import numpy as np

from . import _vorn
from ._network import Network, Path, read
from ._result import Table


class Comparison:
    """Which points kept their places to one another, and how far the others moved. Metres, radians, years."""

    def __init__(self, text: str, report: str) -> None:
        self._text = text
        #: The report for people.
        self.report = report

    @cached_property
    def data(self) -> Dict[str, Any]:
        """Everything, as the program writes it as JSON (``docs/epochs.md``): epochs, tests, strains."""
        data: Dict[str, Any] = json.loads(self._text)
        return data

    @property
    def congruent(self) -> bool:
        """Whether nothing speaks against all points having kept their places to one another."""
        return bool(self.data["congruence"]["passed"])

    @property
    def p(self) -> float:
        """Probability of so large a growth of v'Pv where no point moved."""
        return float(self.data["congruence"]["p"])

    @property
    def variance_factor(self) -> float:
        """With which all is tested: that of all epochs together, or 1."""
        return float(self.data["variance_factor"])

    @property
    def notes(self) -> List[str]:
        """What was taken care of, a sentence each."""
        return list(self.data["notes"])

    @property
    def stable(self) -> List[str]:
        """Names of the points that kept their places to one another."""
        return [p["name"] for p in self.data["points"] if p["stable"]]

    @property
    def moved(self) -> List[str]:
        """Names of the others."""
        return [p["name"] for p in self.data["points"] if not p["stable"]]

    @cached_property
    def shifts(self) -> Table:
        """A row for each point and epoch behind the first: ``name``, ``epoch`` (from 2), ``stable``, by coordinate
        ``dx`` and its standard deviation ``sx``, the confidence ellipse ``a``, ``b``, ``bearing``, ``p`` (of such a
        shift of a point that did not move) and ``significant``. Coordinates that were not compared are NaN."""
        rows = [(p, s) for p in self.data["points"] for s in p["shifts"]]
        table = Table(
            name=np.array([p["name"] for p, _ in rows], "O"),
            epoch=np.array([s["epoch"] for _, s in rows], int),
            stable=np.array([p["stable"] for p, _ in rows], bool),
        )
        for axis in "xyz":
            table["d" + axis] = _numbers(s["by"].get(axis) for _, s in rows)
            table["s" + axis] = _numbers(s["standard_deviation"].get(axis) for _, s in rows)
        ellipses = [s.get("confidence_ellipse", {}) for _, s in rows]
        for name, key in (("a", "semi_major_axis"), ("b", "semi_minor_axis"), ("bearing", "bearing")):
            table[name] = _numbers(e.get(key) for e in ellipses)
        tests = [s.get("test", {}) for _, s in rows]
        table["p"] = _numbers(t.get("p") for t in tests)
        table["significant"] = np.array([not t.get("passed", True) for t in tests], bool)
        return table

    @cached_property
    def velocities(self) -> Table:
        """A row for each point whose velocity is known, of three and more dated epochs: ``name``, by coordinate ``vx``
        and its standard deviation ``sx`` (metres a year), ``p_moving`` and ``p_steady`` of the tests that it is zero,
        and that the point kept to it."""
        rows = [(p["name"], p["velocity_per_year"]) for p in self.data["points"] if "velocity_per_year" in p]
        table = Table(name=np.array([name for name, _ in rows], "O"))
        for axis in "xyz":
            table["v" + axis] = _numbers(v["by"].get(axis) for _, v in rows)
            table["s" + axis] = _numbers(v["standard_deviation"].get(axis) for _, v in rows)
        table["p_moving"] = _numbers(v.get("moving", {}).get("p") for _, v in rows)
        table["p_steady"] = _numbers(v.get("steady", {}).get("p") for _, v in rows)
        return table

    def __repr__(self) -> str:
        moved = ", ".join(self.moved) or "no point"
        return f"<vorn.Comparison: {len(self.data['epochs'])} epochs, {len(self.data['points'])} points, moved: {moved}>"


def _numbers(values: Iterable[Optional[float]]) -> Any:
    return np.array([np.nan if x is None else x for x in values], float)


def compare(
    *epochs: Union[Network, Path],
    level: float = 0.05,
    apriori: bool = False,
    held: bool = False,
    points: Iterable[str] = (),
    dates: Iterable[str] = (),
    strain: Iterable[Sequence[str]] = (),
) -> Comparison:
    """Compares epochs of a network by a joint adjustment: which points kept their places, and how the others moved.

    Args:
        epochs: two or more networks in the order of time, or what :func:`vorn.read` takes. The same point has the same
            name in all.
        level: probability of a false alarm of each test.
        apriori: tests with the variance factor 1 instead of that of the epochs.
        held: coordinates that the networks hold stay held; they are free without it.
        points: names of the points to compare; all that the epochs have in common without it.
        dates: one an epoch, like "2026-05-01", instead of those of the networks.
        strain: groups of names whose extension, shear and turn are wanted; they stand in ``Comparison.data["strains"]``.

    Raises:
        InputError: a network cannot be read.
        AdjustmentError: they cannot be adjusted or compared; the sentence says why.

    >>> import vorn
    >>> lines = {"from": ["A", "B", "C", "A"], "to": ["B", "C", "A", "B"], "sigma": 0.001}
    >>> targets = {"name": ["A", "B", "C"], "z": [100.0, 101.0, 102.0]}
    >>> may, june = (vorn.Network(dimension=1, targets=targets, height_differences=dict(lines, value=value))
    ...              for value in ([1.0, 1.0, -2.0, 1.0], [1.02, 0.98, -2.0, 1.02]))
    >>> comparison = vorn.compare(may, june, apriori=True)
    >>> comparison
    <vorn.Comparison: 2 epochs, 3 points, moved: B>
    >>> comparison.shifts["dz"].round(4).tolist()
    [0.0, 0.02, 0.0]
    """
    networks = [n if isinstance(n, Network) else read(n) for n in epochs]
    text, report = _vorn.compare(
        [n._core for n in networks],
        float(level),
        bool(apriori),
        bool(held),
        list(points),
        list(dates),
        [list(group) for group in strain],
    )
    return Comparison(text, report)
