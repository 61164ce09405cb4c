"""Results of a run as arrays, tables, pages and plots."""

from __future__ import annotations

import html
import json
from functools import cached_property
from typing import TYPE_CHECKING, Any, Dict, List, Optional

import numpy as np
import numpy.typing as npt

from . import _vorn

if TYPE_CHECKING:
    import pandas
    from matplotlib.axes import Axes

Array = npt.NDArray[Any]


class Table(Dict[str, Array]):
    """Columns by their names, all arrays of the same length. A number that the run did not make is NaN.

    >>> import numpy as np
    >>> from vorn import Table
    >>> table = Table(name=np.array(["A", "B"], "O"), z=np.array([1.0, np.nan]))
    >>> table["z"]
    array([ 1., nan])
    >>> table.rows
    2
    """

    @property
    def rows(self) -> int:
        """Number of rows."""
        return len(next(iter(self.values()), ()))

    def to_pandas(self) -> "pandas.DataFrame":
        """The columns as a table of pandas.

        Raises:
            ImportError: pandas is not installed.
        """
        import pandas

        return pandas.DataFrame(dict(self))

    def _repr_html_(self) -> Optional[str]:
        try:
            return str(self.to_pandas()._repr_html_())
        except ImportError:
            return None


class Result:
    """Results of a run. Lengths are metres, angles radians, whatever the units of the network.

    Residuals are observed less computed. Standard deviations and covariances contain the variance factor.
    """

    def __init__(self, core: _vorn.Result) -> None:
        self._core = core

    @property
    def dimension(self) -> int:
        """1 heights, 2 plane, 3 space."""
        return self._core.dimension

    @property
    def degrees_of_freedom(self) -> Optional[int]:
        """Redundancy of the network; None where the run made none."""
        return self._core.degrees_of_freedom

    @property
    def sigma(self) -> Optional[float]:
        """Standard deviation of unit weight after the adjustment; near 1 where the a-priori ones are right."""
        return self._core.sigma

    @property
    def variance_test(self) -> Optional[bool]:
        """Whether the variance factor agrees with 1, at 95 %."""
        return self._core.variance_test

    @property
    def datum(self) -> str:
        """What holds the network, in one line."""
        return self._core.datum

    @property
    def notes(self) -> List[str]:
        """What was taken care of, a sentence each."""
        return self._core.notes

    @property
    def report(self) -> str:
        """The report for people; empty unless the run was asked for it."""
        return self._core.report

    @cached_property
    def points(self) -> Table:
        """A row for each point, in the order of the network.

        Columns ``name``, ``station``; for the coordinates that the dimension has ``x`` (adjusted), ``sx`` (standard
        deviation), ``approximate_x``, ``code_x``; in plane and space the standard ellipse in x and y: ``a``, ``b`` and
        ``bearing`` of its major axis from x towards y.
        """
        return Table(self._core.points())

    @cached_property
    def residuals(self) -> Table:
        """A row for each observation that took part, in the order of the adjustment.

        Columns ``kind``, ``from``, ``to``, ``at`` (the point of an angle), ``component``, ``id``, ``file`` and ``line``
        (of networks made of arrays the table and the row, from 1), ``unit``, ``value``, ``sigma``, ``adjusted``,
        ``residual``, ``redundancy``, ``normalised``, ``suspicious``; of the test of the observation ``checked`` (others
        control it), ``p_value``, ``detectable`` (the smallest error that it finds with its power), ``bias_to_noise``
        and ``shift`` (of its own points by that error, metres).
        """
        return Table(self._core.residuals())

    @property
    def covariance_points(self) -> List[str]:
        """Points whose covariances the run was asked for, in the order of :attr:`covariance_matrix`."""
        return self._core.covariance_points

    @cached_property
    def covariance_matrix(self) -> npt.NDArray[np.float64]:
        """Covariances of x, y, z of each of :attr:`covariance_points` with each, square metres; 0 for a coordinate
        that is held or that the dimension does not have. Shape (3 n, 3 n)."""
        return self._core.covariance_matrix()

    def covariance(self, first: str, second: Optional[str] = None) -> npt.NDArray[np.float64]:
        """Covariances of x, y, z of one point with those of another, or its own; square metres, shape (3, 3).

        Raises:
            KeyError: the run was not asked for the covariances of this point.
        """
        place = self._covariance_places
        for name in (first, first if second is None else second):
            if name not in place:
                raise KeyError(f"no covariances of {name!r}: name the point in covariances of adjust, with solver sparse")
        i, k = place[first], place[first if second is None else second]
        return self.covariance_matrix[3 * i : 3 * i + 3, 3 * k : 3 * k + 3]

    @cached_property
    def _covariance_places(self) -> Dict[str, int]:
        return {name: i for i, name in enumerate(self.covariance_points)}

    def to_json(self) -> str:
        """All results as JSON, as the program writes it (``share/vorn-result.schema.json``)."""
        return self._core.json()

    @cached_property
    def data(self) -> Dict[str, Any]:
        """What :meth:`to_json` says, as dicts and lists: orientations, constants, cameras, kinds, pairs too."""
        data: Dict[str, Any] = json.loads(self.to_json())
        return data

    def page(self) -> str:
        """The page of the run for a browser: one HTML file with everything in it."""
        return self._core.page()

    def _repr_html_(self) -> str:
        frame = 'style="width: 100%; height: 800px; border: 1px solid #ccc" sandbox="allow-scripts"'
        return f'<iframe {frame} srcdoc="{html.escape(self.page())}"></iframe>'

    def plot(self, ax: Optional["Axes"] = None, *, magnification: Optional[float] = None) -> "Axes":
        """Draws the network: points, the sights between them, suspicious ones in red, and standard ellipses.

        x points upwards and y to the right, as directions turn. A network of heights is drawn as standard deviations.

        Args:
            ax: axes to draw in; new ones without.
            magnification: of the ellipses; without, so that the largest can be seen.

        Raises:
            ImportError: matplotlib is not installed.
        """
        from ._plot import plot

        return plot(self, ax, magnification)

    def __repr__(self) -> str:
        sigma = "" if self.sigma is None else f", sigma {self.sigma:.3f}"
        return f"<vorn.Result: {self.points.rows} points, {self.residuals.rows} residuals{sigma}>"
