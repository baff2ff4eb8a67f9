"""Toolpaths, from files and from arrays."""

from __future__ import annotations

import os
import warnings
from dataclasses import dataclass
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

from . import _trunnion
from ._errors import refuse


@dataclass(frozen=True)
class Operation:
    """What is done with one tool under one name."""

    name: str  #: empty where the file gives none
    line: int  #: where it begins
    first_point: int
    tool_number: Optional[int]
    tool_length: Optional[float]  #: from the tool's seat to its end


class Toolpath:
    """Points that a tool is to pass, in part coordinates.

    ``points`` has a row x, y, z, i, j, k for each: the tool's end, and its direction from there to
    its shank, of any length. ``rapid`` says to which of them a rapid leads. ``name`` is what
    messages call the path.
    """

    def __init__(
        self,
        points: npt.ArrayLike,
        rapid: Optional[npt.ArrayLike] = None,
        *,
        name: str = "toolpath",
    ) -> None:
        rows = np.atleast_2d(np.asarray(points, dtype=float))
        flags = np.zeros(len(rows), bool) if rapid is None else np.asarray(rapid, dtype=bool)
        self._path = _trunnion.Path.from_arrays(rows, flags, name)

    @classmethod
    def read(
        cls,
        file: Union[str, os.PathLike[str]],
        format: Optional[str] = None,
        *,
        length_unit: str = "mm",
    ) -> Toolpath:
        """Reads a toolpath file: cutter locations, a table or an NC program with tool vectors.

        ``format`` is "apt", "csv" or "nc"; without it the end of the name tells them apart. Lengths
        come out in ``length_unit``, "mm" or "inch". What the reader passes over is warned of.
        """
        path = cls.__new__(cls)
        path._path = _trunnion.Path.read(os.fspath(file), format, length_unit)
        for sentence in path._path.warnings:
            warnings.warn(sentence, stacklevel=2)
        return path

    @property
    def file(self) -> str:
        """What messages call the path."""
        return self._path.file

    @property
    def points(self) -> npt.NDArray[np.float64]:
        """A row x, y, z, i, j, k for each point; the directions have length 1."""
        return self._path.points

    @property
    def rapid(self) -> npt.NDArray[np.bool_]:
        """Whether a rapid leads to each point."""
        return self._path.rapid

    @property
    def lines(self) -> npt.NDArray[np.int32]:
        """The line of the file of each point."""
        return self._path.lines

    @property
    def operation(self) -> npt.NDArray[np.int32]:
        """The operation of each point, an index into ``operations``."""
        return self._path.operation

    @property
    def operations(self) -> list[Operation]:
        """What is done on the path, in order."""
        return [Operation(**one) for one in self._path.operations]

    @property
    def warnings(self) -> list[str]:
        """What the reader passed over, in whole sentences."""
        return self._path.warnings

    def __len__(self) -> int:
        """The number of points."""
        return len(self.rapid)

    def __repr__(self) -> str:
        """The name and the number of points."""
        return f'<trunnion.Toolpath "{self.file}": {len(self)} points>'


def path_of(
    path: Union[Toolpath, str, os.PathLike[str], npt.ArrayLike], length_unit: str
) -> Toolpath:
    """A toolpath from whatever a caller gives as one."""
    if isinstance(path, Toolpath):
        return path
    if isinstance(path, (str, os.PathLike)):
        return Toolpath.read(path, length_unit=length_unit)
    points = np.asarray(path, dtype=float)
    if points.ndim != 2:
        refuse("toolpath", "give a Toolpath, a file, or an array with rows x, y, z, i, j, k")
    return Toolpath(points)
