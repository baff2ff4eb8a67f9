"""What planning a toolpath comes to."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
import numpy.typing as npt


@dataclass(frozen=True)
class Event:
    """Something in the motion that whoever runs it has to know."""

    kind: str  #: "flip", "rewind", "pole", "limit" or "failed"
    point: int  #: index of the point of the toolpath
    line: int  #: of the toolpath file
    sentence: str


@dataclass(frozen=True, eq=False, repr=False)
class Motion:
    """Where the axes stand from row to row; between two rows they move evenly.

    The arrays have an entry for each row. A row that has failed has NaN for its joints.
    """

    axes: tuple[str, ...]  #: the names of the columns of ``joints``
    rotary: npt.NDArray[np.bool_]  #: which of the axes are
    degrees: bool  #: whether angles are degrees, else radians
    joints: npt.NDArray[np.float64]  #: rows by axes
    point: npt.NDArray[np.int64]  #: index of the point at which the row stands or to which it leads
    line: npt.NDArray[np.int64]  #: of the toolpath file
    asked: npt.NDArray[np.float64]  #: x, y, z, i, j, k: where the tool should stand
    position_error: npt.NDArray[np.float64]  #: what forward kinematics leaves of that, a length
    direction_error: npt.NDArray[np.float64]  #: and an angle
    branch: npt.NDArray[np.int32]  #: from 1; 0 where there is none
    #: a column of truth values for each of "rapid", "inserted", "flip", "rewind", "pole", "limit"
    #: and "failed"
    flags: dict[str, npt.NDArray[np.bool_]]
    events: list[Event]  #: in the order of the path
    warnings: list[str]

    @property
    def converged(self) -> bool:
        """Whether every point is reached."""
        return not self.flags["failed"].any()

    def __len__(self) -> int:
        """The number of rows."""
        return len(self.point)

    def __repr__(self) -> str:
        """How many rows there are, and how many of them are of which kind."""
        inserted = int(self.flags["inserted"].sum())
        failed = int(self.flags["failed"].sum())
        return f"<trunnion.Motion: {len(self)} rows, {inserted} of them inserted, {failed} failed>"
