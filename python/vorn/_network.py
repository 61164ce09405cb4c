"""Networks: read from files and texts, or made of arrays."""

from __future__ import annotations

import json
import os
from typing import Any, Callable, Dict, Iterable, List, Mapping, Optional, Union

from . import _vorn
from ._result import Result

Progress = Callable[[str, float], object]
Path = Union[str, "os.PathLike[str]"]

TABLES = (
    "stations", "targets", "setups", "distances", "horizontal_distances", "height_differences", "directions",
    "vertical_angles", "azimuths", "bearings", "angles", "baselines", "coordinates", "coordinate_differences",
    "scale_bars", "groups", "cameras", "images", "lumps", "pairs",
)  # fmt: skip


def _toml(value: object) -> str:
    """A setting as TOML writes it."""
    if isinstance(value, (list, tuple)):
        return "[" + ", ".join(_toml(one) for one in value) + "]"
    if isinstance(value, (bool, str)):
        return json.dumps(value, ensure_ascii=False).replace("\x7f", "\\u007F")
    if isinstance(value, int):
        return str(value)
    try:
        return repr(float(value))  # type: ignore[arg-type]
    except (TypeError, ValueError):
        raise TypeError(f"{value!r} is no setting: a number, a text or a list of numbers is") from None


def _settings(sections: Mapping[str, Mapping[str, object]]) -> str:
    """Sections of settings as the text of a network file."""
    lines: List[str] = []
    for section, keys in sections.items():
        lines.append(f"[{section}]")
        lines.extend(f"{key} = {_toml(value)}" for key, value in keys.items())
    return "\n".join(lines) + "\n"


def _columns(table: Any) -> Dict[str, object]:
    """Columns of a dict, of a table of pandas, or of a structured array of NumPy."""
    names = getattr(getattr(table, "dtype", None), "names", None)
    if names:
        return {name: table[name] for name in names}
    if hasattr(table, "columns"):
        return {str(name): table[name].to_numpy() for name in table.columns}
    return dict(table)


class Network:
    """A network of points and observations.

    It is made of the tables and columns of a network file (``docs/network-file.md``), with an array for each column::

        Network(dimension=2, settings={"units": {"angle": "gon"}}, stations={...}, targets={...}, distances={...})

    Args:
        dimension: 1 heights, 2 plane, 3 space.
        title: one line.
        settings: sections of the network file, ``{"units": {"angle": "degree"}, "sigma": {"distances": 0.003}}``.
        covariances: square arrays of variances and covariances, which rows name in their column ``covariance``.
        name: what the network is called in results and messages; files that it names are looked for in its folder.
        tables: ``targets``, ``distances`` and so on: a dict of columns, a pandas DataFrame or a structured array. A
            value that is not an array stands for all rows. NaN and None are values that are not known.

    Units are those of ``settings["units"]``, metres and gon without it.

    Raises:
        InputError: something in it is wrong; ``line`` is the row of the table, from 1.
        TypeError: a column is no array of numbers or words.

    A network does not change, and may be adjusted in several threads at once.

    >>> import vorn
    >>> network = vorn.Network(
    ...     dimension=1,
    ...     targets={"name": ["A", "B", "C"], "z": [100.0, 101.2, 103.5], "code": ["fixed", "free", "free"]},
    ...     height_differences={"from": ["A", "B", "C"], "to": ["B", "C", "A"], "value": [1.234, 2.221, -3.452],
    ...                         "sigma": 0.001})
    >>> network.points
    ['A', 'B', 'C']
    >>> network.adjust().points["z"].round(6).tolist()
    [100.0, 101.233, 103.453]
    """

    __slots__ = ("_core",)
    _core: _vorn.Network

    def __init__(
        self,
        *,
        dimension: int,
        title: Optional[str] = None,
        settings: Optional[Mapping[str, Mapping[str, object]]] = None,
        covariances: Optional[Mapping[str, object]] = None,
        name: Path = "network.inp",
        **tables: object,
    ) -> None:
        unknown = [table for table in tables if table not in TABLES]
        if unknown:
            raise TypeError(f"{unknown[0]!r} is no table of a network; tables are {', '.join(TABLES)}")
        sections: Dict[str, Dict[str, object]] = {"run": {"dimension": dimension}}
        if title is not None:
            sections["run"]["title"] = title
        for section, keys in (settings or {}).items():
            sections.setdefault(section, {}).update(keys)
        self._core = _vorn.read_arrays(
            _settings(sections),
            {table: _columns(columns) for table, columns in tables.items()},
            dict(covariances or {}),
            os.fsencode(name),
        )

    @classmethod
    def _of(cls, core: _vorn.Network) -> "Network":
        network = cls.__new__(cls)
        network._core = core
        return network

    @property
    def title(self) -> str:
        """Title of the network; empty where it has none."""
        return self._core.title

    @property
    def points(self) -> List[str]:
        """Names of the stations and targets, in their order."""
        return self._core.point_names()

    @property
    def notes(self) -> List[str]:
        """What was left out of a foreign file or assumed, a sentence each."""
        return self._core.notes

    def adjust(
        self,
        *,
        covariances: Union[bool, Iterable[str]] = (),
        report: bool = False,
        threads: int = 1,
        progress: Optional[Progress] = None,
    ) -> Result:
        """Adjusts the network; see :func:`vorn.adjust`."""
        if isinstance(covariances, str):
            raise TypeError("covariances are a list of names of points, or True for all")
        names = self.points if covariances is True else list(covariances or ())
        unknown = set(names).difference(self.points) if names else ()
        if unknown:
            raise ValueError(f"covariances: there is no point {min(unknown)!r}")
        return Result(self._core.adjust(threads, report, names, progress))

    def simulate(self, *, seed: int = 0, noise: float = 1.0) -> "Network":
        """Draws observations; see :func:`vorn.simulate`."""
        return Network._of(self._core.simulate(seed, noise))

    def __repr__(self) -> str:
        n = len(self.points)
        return f"<vorn.Network {self.title!r}: {n} {'point' if n == 1 else 'points'}>"


def read(source: Path, *, name: Path = "network.inp") -> Network:
    """Reads a network file, or the text of one.

    Args:
        source: a path, or a text; what has a line end is a text. Files of foreign formats that the program imports are
            read too, and ``Network.notes`` says what was left out.
        name: what a text is called in messages; files that it names are looked for in the folder of the name.

    Raises:
        InputError: the file cannot be read, or something in it is wrong.

    >>> import vorn
    >>> network = vorn.read('''
    ... [run]
    ... title = "Two lines"
    ... dimension = 1
    ... [tables]
    ... targets = \"\"\"
    ... name  z    code
    ... A     100  fixed
    ... B     -    free
    ... \"\"\"
    ... height_differences = \"\"\"
    ... from  to  value  sigma
    ... A     B   1.002  0.001
    ... A     B   1.004  0.001
    ... \"\"\"
    ... ''')
    >>> network
    <vorn.Network 'Two lines': 2 points>
    >>> vorn.read("no such file.inp")
    Traceback (most recent call last):
        ...
    vorn.InputError: no such file.inp: file "no such file.inp" does not exist; check its name and folder
    """
    if isinstance(source, str) and "\n" in source:
        return Network._of(_vorn.read_text(source, os.fsencode(name)))
    return Network._of(_vorn.read_file(os.fsencode(source)))


def adjust(
    network: Union[Network, Path],
    *,
    covariances: Union[bool, Iterable[str]] = (),
    report: bool = False,
    threads: int = 1,
    progress: Optional[Progress] = None,
) -> Result:
    """Adjusts a network by least squares, or as its settings say.

    Args:
        network: a network, or what :func:`vorn.read` takes.
        covariances: names of the points whose covariances are wanted, each with each; True for all. They cost a
            solution for each coordinate and need the solver ``sparse``.
        report: whether ``Result.report`` is wanted.
        threads: of the computation.
        progress: is called with the name of a step and the share of it that is done, 0 to 1, in the thread that called
            this function. What it raises ends the run.

    Raises:
        InputError: the network cannot be read.
        AdjustmentError: it cannot be adjusted; the sentence says why.
        ValueError: covariances of a point are wanted that is not in the network.
        KeyboardInterrupt: Ctrl-C ends a run of the solver ``sparse`` within moments.

    Other threads of Python go on meanwhile. A network that exports points writes their file into the working folder;
    nothing else is written.

    >>> import vorn
    >>> network = vorn.Network(
    ...     dimension=1,
    ...     targets={"name": ["A", "B", "C"], "z": [100.0, 101.2, 103.5], "code": ["fixed", "free", "free"]},
    ...     height_differences={"from": ["A", "B", "C"], "to": ["B", "C", "A"], "value": [1.234, 2.221, -3.452],
    ...                         "sigma": 0.001})
    >>> result = vorn.adjust(network, covariances=["B", "C"])
    >>> round(result.sigma, 6), result.degrees_of_freedom
    (1.732051, 1)
    >>> result.residuals["residual"].round(6).tolist()
    [0.001, 0.001, 0.001]
    >>> round(float(result.covariance("B", "C")[2, 2]), 12)
    1e-06
    """
    if not isinstance(network, Network):
        network = read(network)
    return network.adjust(covariances=covariances, report=report, threads=threads, progress=progress)


def simulate(network: Union[Network, Path], *, seed: int = 0, noise: float = 1.0) -> Network:
    """Draws the observations of a network: what its coordinates, orientations and constants make of every row, with
    errors of the standard deviations and covariances of the rows.

    Values of weighted unknowns are drawn too. Orientations that are not given count as 0. A planned network (mode
    ``propagation``), whose values need not be known, becomes one to be adjusted.

    Args:
        network: a network, or what :func:`vorn.read` takes. The coordinates of every point must be given; images and
            imported points are refused.
        seed: each gives another draw, the same one every time.
        noise: errors are multiplied by it; 0 gives values without errors.

    Raises:
        InputError: the network cannot be read or simulated; the sentence says why.

    >>> import vorn
    >>> plan = vorn.Network(
    ...     dimension=2, settings={"run": {"mode": "propagation"}},
    ...     targets={"name": ["A", "B", "P"], "x": [0.0, 0.0, 30.0], "y": [0.0, 100.0, 40.0],
    ...              "code": ["fixed", "fixed", "free"]},
    ...     distances={"from": ["A", "B", "A"], "to": ["P", "P", "P"], "value": None, "sigma": 0.002})
    >>> vorn.simulate(plan, noise=0).adjust().residuals["value"].round(4).tolist()
    [50.0, 67.082, 50.0]
    >>> bool(vorn.simulate(plan, seed=3).adjust().sigma < 5)
    True
    """
    if not isinstance(network, Network):
        network = read(network)
    return network.simulate(seed=seed, noise=noise)
