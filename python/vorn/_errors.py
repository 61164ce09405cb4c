"""What goes wrong, with its place."""

from __future__ import annotations

from typing import NamedTuple, Sequence


class Fault(NamedTuple):
    """One thing that is wrong.

    ``line`` and ``column`` count from 1 and are 0 where there is none. A fault in a table that was made of arrays has
    the file ``"table NAME"`` and as line the row, from 1.
    """

    file: str
    line: int
    column: int
    sentence: str
    remedy: str
    text: str

    def __str__(self) -> str:
        return self.text


class Error(Exception):
    """What the package raises: its text has a line for each fault.

    Attributes:
        faults: all of them, in the order of their places.
    """

    def __init__(self, faults: Sequence[Fault] = ()) -> None:
        self.faults = tuple(faults)
        super().__init__(self.faults)

    def __str__(self) -> str:
        return "\n".join(fault.text for fault in self.faults)

    def _first(self) -> Fault:
        return self.faults[0] if self.faults else Fault("", 0, 0, "", "", "")

    @property
    def file(self) -> str:
        """File of the first fault."""
        return self._first().file

    @property
    def line(self) -> int:
        """Line of the first fault, 0 where there is none."""
        return self._first().line

    @property
    def sentence(self) -> str:
        """What the first fault says."""
        return self._first().sentence


class InputError(Error, ValueError):
    """The network cannot be read: something in it is wrong.

    >>> import vorn
    >>> try:
    ...     vorn.Network(dimension=1, targets={"name": ["A", "B"], "z": [10.0, None], "code": ["fixed", "free"]},
    ...                  height_differences={"from": ["A"], "to": ["C"], "value": [1.5], "sigma": [0.001]})
    ... except vorn.InputError as error:
    ...     print(error.file, error.line, error.sentence, sep=" | ")
    table height_differences | 1 | unknown point "C" in column to
    """


class AdjustmentError(Error):
    """The network was read, but cannot be adjusted. The sentence says why, the remedy what would help."""
