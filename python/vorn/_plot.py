"""Plots of networks with matplotlib."""

from __future__ import annotations

import math
from typing import TYPE_CHECKING, Any, Optional

import matplotlib.pyplot as plt
import numpy as np
import numpy.typing as npt
from matplotlib.axes import Axes
from matplotlib.collections import EllipseCollection, LineCollection

if TYPE_CHECKING:
    from ._result import Result, Table

Array = npt.NDArray[Any]
MOST_NAMES = 200  # of points that are written beside them


def plot(result: "Result", ax: Optional[Axes], magnification: Optional[float]) -> Axes:
    """Draws a result; see Result.plot."""
    if ax is None:
        _, ax = plt.subplots(layout="constrained")
    if result.dimension == 1:
        return _plot_heights(result.points, ax)
    right, up = result.points["y"], result.points["x"]
    _draw_sights(result, ax, np.column_stack((right, up)))
    _draw_ellipses(result.points, ax, magnification)
    _draw_points(result.points, ax)
    ax.set_aspect("equal", adjustable="datalim")
    ax.set_xlabel("y [m]")
    ax.set_ylabel("x [m]")
    ax.ticklabel_format(useOffset=False, style="plain")
    ax.margins(0.1)
    return ax


def _plot_heights(points: "Table", ax: Axes) -> Axes:
    place = np.arange(points.rows)
    ax.bar(place, 1000 * np.nan_to_num(points["sz"]), color="#1f5fa8")
    ax.set_ylabel("standard deviation of z [mm]")
    if points.rows <= MOST_NAMES:
        ax.set_xticks(place, list(points["name"]), rotation=90 if points.rows > 12 else 0)
    return ax


def _places(points: "Table", names: Array) -> Array:
    """Row of the point with each name, -1 where there is none."""
    order = np.argsort(points["name"])
    known = points["name"][order]
    at = np.minimum(np.searchsorted(known, names), len(known) - 1)
    return np.where(known[at] == names, order[at], -1)


def _draw_sights(result: "Result", ax: Axes, where: Array) -> None:
    residuals = result.residuals
    angle = residuals["at"] != ""
    first = _places(result.points, np.where(angle, residuals["at"], residuals["from"]))
    second = _places(result.points, residuals["to"])
    there = (first >= 0) & (second >= 0)
    ends = np.column_stack((first, second))
    for rows, colour, width in ((there & ~residuals["suspicious"], "#9aa7b4", 0.8),
                                (there & residuals["suspicious"], "#c62828", 1.6)):  # fmt: skip
        pairs = np.unique(np.sort(ends[rows], axis=1), axis=0)
        ax.add_collection(LineCollection(where[pairs], colors=colour, linewidths=width, zorder=1))


def _round_number(x: float) -> float:
    """1, 2 or 5 times a power of ten, not above x."""
    power = 10.0 ** math.floor(math.log10(x))
    return max(step * power for step in (1.0, 2.0, 5.0) if step * power <= x * (1 + 1e-12))


def _draw_ellipses(points: "Table", ax: Axes, magnification: Optional[float]) -> None:
    there = np.nan_to_num(points["a"]) > 0
    if not there.any():
        return
    a, b = points["a"][there], points["b"][there]
    right, up = points["y"], points["x"]
    size = max(float(np.ptp(right)), float(np.ptp(up)), 1e-3)
    if magnification is None:
        magnification = _round_number(0.05 * size / float(a.max()))
    ellipses = EllipseCollection(
        2 * a * magnification, 2 * b * magnification, 90 - np.degrees(points["bearing"][there]), units="xy",
        offsets=np.column_stack((right, up))[there], offset_transform=ax.transData,
        facecolors="none", edgecolors="#1f5fa8", zorder=3,
    )  # fmt: skip
    ax.add_collection(ellipses)
    ax.set_title(f"standard ellipses x {magnification:g}", fontsize="small")


def _draw_points(points: "Table", ax: Axes) -> None:
    right, up = points["y"], points["x"]
    held = (points["code_x"] == "fixed") & (points["code_y"] == "fixed")
    for rows, marker, fill, label in ((held, "s", "#222222", "fixed"), (~held & points["station"], "^", "white", "stations"),
                                      (~held & ~points["station"], "o", "white", "targets")):  # fmt: skip
        if rows.any():
            ax.scatter(right[rows], up[rows], s=25, marker=marker, facecolors=fill, edgecolors="#222222", label=label, zorder=4)
    ax.legend(fontsize="small")
    if points.rows <= MOST_NAMES:
        for name, x, y in zip(points["name"], right, up):
            ax.annotate(name, (x, y), xytext=(4, 4), textcoords="offset points", fontsize="small")
