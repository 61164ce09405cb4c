"""Adjustment of survey and industrial-metrology networks.

>>> import vorn
>>> network = vorn.Network(
...     dimension=2,
...     targets={"name": ["A", "B", "P"], "x": [0.0, 0.0, 30.0], "y": [0.0, 100.0, 40.0],
...              "code": ["fixed", "fixed", "free"]},
...     distances={"from": ["A", "B", "A"], "to": ["P", "P", "P"], "value": [50.001, 67.080, 50.003], "sigma": 0.002})
>>> result = vorn.adjust(network)
>>> result
<vorn.Result: 3 points, 3 residuals, sigma 0.707>
>>> result.points["x"].round(4).tolist()
[0.0, 0.0, 30.0002]

Lengths of results are metres, angles radians. ``docs/python.md`` and the notebook ``python/tutorial.ipynb`` say more.
"""

from ._compare import Comparison, compare
from ._errors import AdjustmentError, Error, Fault, InputError
from ._network import Network, adjust, read, simulate
from ._result import Result, Table
from ._vorn import version as _version

__all__ = [
    "AdjustmentError",
    "Comparison",
    "Error",
    "Fault",
    "InputError",
    "Network",
    "Result",
    "Table",
    "adjust",
    "compare",
    "read",
    "simulate",
]
__version__ = _version()

for _public in (AdjustmentError, Comparison, Error, Fault, InputError, Network, Result, Table):
    _public.__module__ = __name__  # where people find them
