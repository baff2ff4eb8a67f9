"""Machines that were read from files."""

from __future__ import annotations

import os
import warnings
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

from . import _trunnion
from ._errors import refuse
from ._motion import Event, Motion
from ._toolpath import Toolpath, path_of

_Triple = tuple[float, float, float]


@dataclass(frozen=True)
class Axis:
    """An axis as the machine file has it, in machine coordinates with all axes at zero."""

    name: str
    type: str  #: "linear" or "rotary"
    parent: str  #: the axis that it hangs on, or "base"
    unit: str  #: of limits and initial value: "mm", "inch" or "rad"
    limits: tuple[float, float]  #: low and high; infinite where there is none
    direction: _Triple  #: of its body's motion for positive values; length 1
    point: _Triple  #: on the axis of a rotary one
    initial: float  #: where it starts
    word: str  #: of the axis in G-code
    word_sign: int  #: 1 or -1: of the word, against the motion of the body


@dataclass(frozen=True)
class Mount:
    """Where a tool or a part is seated, in machine coordinates with all axes at zero."""

    name: str
    kind: str  #: "tool" or "part"
    parent: str  #: the axis that carries it, or "base"
    origin: _Triple
    z_axis: _Triple
    x_axis: _Triple


@dataclass(frozen=True, eq=False, repr=False)
class Solutions:
    """Joint values for poses, and what they leave of them.

    Of an array of poses each field has a row for each; of a single pose there is no such dimension.
    What has not converged is NaN.
    """

    axes: tuple[str, ...]  #: the names of the columns of ``joints``
    rotary: npt.NDArray[np.bool_]  #: which of the axes are
    degrees: bool  #: whether angles are degrees, else radians
    joints: npt.NDArray[np.float64]
    converged: npt.NDArray[np.bool_]
    position_error: npt.NDArray[np.float64]  #: what forward kinematics leaves, a length
    direction_error: npt.NDArray[np.float64]  #: and an angle: of the x axis too where that counts

    def __len__(self) -> int:
        """The number of poses of an array; a TypeError for a single one."""
        return len(self.converged)

    def __repr__(self) -> str:
        """How many there are, and how many have converged."""
        converged = np.atleast_1d(self.converged)
        return f"<trunnion.Solutions: {int(converged.sum())} of {len(converged)} converged>"


def _frames_to_poses(frames: npt.NDArray[np.float64]) -> npt.NDArray[np.float64]:
    turn = frames[:, :3, :3]
    rigid = np.abs(np.swapaxes(turn, 1, 2) @ turn - np.eye(3)).max(axis=(1, 2)) < 1e-6
    rigid &= (np.linalg.det(turn) > 0) & (frames[:, 3] == [0, 0, 0, 1]).all(axis=1)
    if not rigid.all():
        refuse("poses", f"frame {int(np.argmin(rigid))} is not a rigid transform")
    return np.concatenate([frames[:, :3, 3], turn[:, :, 2], turn[:, :, 0]], axis=1)


def _pose_rows(poses: npt.ArrayLike) -> tuple[npt.NDArray[np.float64], bool]:
    """Rows of 6 or 9 numbers, and whether it was a single pose."""
    array = np.asarray(poses, dtype=float)
    if array.shape[-2:] == (4, 4) and array.ndim in (2, 3):
        return _frames_to_poses(array.reshape(-1, 4, 4)), array.ndim == 2
    if array.ndim not in (1, 2) or array.shape[-1] not in (6, 9):
        refuse(
            "poses",
            "a pose is x, y, z, i, j, k, or these with the tool's x axis behind them, or a frame "
            "of 4 by 4 numbers; give one or an array of them",
        )
    return np.atleast_2d(array), array.ndim == 1


class Stream:
    """A tool and a part that it works on, of a machine. ``Machine.stream`` gives one."""

    def __init__(self, machine: Machine, index: int) -> None:
        self._machine = machine
        self._index = index
        self._id, self._tool, self._part, axes = machine._model.streams[index]
        self._axes = tuple(machine.axes[axis] for axis in axes)
        self._rotary = np.array([axis.type == "rotary" for axis in self._axes])
        self._initial: npt.NDArray[np.float64] = np.array([[axis.initial for axis in self._axes]])

    @property
    def machine(self) -> Machine:
        """The machine."""
        return self._machine

    @property
    def id(self) -> int:
        """The number that the machine file gives it."""
        return self._id

    @property
    def tool(self) -> str:
        """The mount of the tool."""
        return self._tool

    @property
    def part(self) -> str:
        """The mount of the part."""
        return self._part

    @property
    def axes(self) -> tuple[Axis, ...]:
        """The axes that move tool or part: joint values are in this order."""
        return self._axes

    @property
    def initial(self) -> npt.NDArray[np.float64]:
        """Where the axes start, lengths and radians."""
        return np.array(self._initial[0])

    def forward(
        self,
        joints: npt.ArrayLike,
        *,
        tool_length: float = 0.0,
        frames: bool = False,
        degrees: bool = False,
    ) -> npt.NDArray[np.float64]:
        """Where the tool stands in part coordinates, for one row of joint values or many.

        Returns x, y, z, i, j, k for each, or frames of 4 by 4 numbers. ``tool_length`` is how far
        the tool's end is from its seat. With ``degrees`` rotary joints are in degrees.
        """
        rows = self._joint_rows("joints", joints, degrees)
        poses = self._machine._model.forward(self._index, rows, tool_length, frames)
        return np.asarray(poses[0]) if np.ndim(joints) == 1 else poses

    def inverse(
        self,
        poses: npt.ArrayLike,
        start: Optional[npt.ArrayLike] = None,
        *,
        start_from: str = "previous",
        limits: bool = True,
        locks: Iterable[str] = (),
        tool_length: float = 0.0,
        tolerance: float = 1e-12,
        max_iterations: int = 60,
        degrees: bool = False,
    ) -> Solutions:
        """Joint values that put the tool at each pose.

        A pose is x, y, z, i, j, k in part coordinates, or nine numbers with the tool's x axis
        behind them, or a frame of 4 by 4 numbers; the last two fix the turn about the tool as well.

        ``start`` holds the joint values to start from, one row for all poses or one for each;
        otherwise the axes start where the machine file has them. With one row, ``start_from`` says
        where each solve starts: "previous", from the last solution, at first from ``start``;
        "given", from ``start``; "search", as "previous", and from many starts where that leads
        nowhere, which always keeps the limits.

        ``limits`` keeps the axes' limits. ``locks`` names axes that stay where their start has
        them. A solve has converged when the squared position error plus the squared angle in
        degrees is at most ``tolerance``, and fails after ``max_iterations`` passes.
        """
        rows, is_single = _pose_rows(poses)
        starts = self._initial if start is None else self._joint_rows("start", start, degrees)
        options = self._options(
            limits, locks, tool_length, start_from, tolerance=tolerance, max_iterations=max_iterations
        )
        solved = self._machine._model.inverse(self._index, rows, starts, options)
        return self._solutions(solved, degrees, is_single)

    def branches(
        self,
        pose: npt.ArrayLike,
        start: Optional[npt.ArrayLike] = None,
        *,
        limits: bool = True,
        locks: Iterable[str] = (),
        tool_length: float = 0.0,
        degrees: bool = False,
    ) -> Solutions:
        """The distinct ways to stand at one pose, a row for each; there may be none.

        They are looked for from starts around ``start``, which differ in up to three rotary axes.
        With more of them free, as an arm has, the starts are all over the machine; of solutions
        that differ by whole turns one is returned, and a turn about the tool that the pose leaves
        open is as a toolpath has it by default.
        """
        rows = self._one_pose(pose)
        starts = self._initial if start is None else self._joint_rows("start", start, degrees)
        options = self._options(limits, locks, tool_length, "given")
        solved = self._machine._model.branches(self._index, rows, starts, options)
        return self._solutions(solved, degrees, False)

    def diagnose(
        self,
        pose: npt.ArrayLike,
        start: Optional[npt.ArrayLike] = None,
        *,
        tool_length: float = 0.0,
        degrees: bool = False,
    ) -> str:
        """Why the tool does not get to a pose from ``start``, in half a sentence.

        Position and direction count. With ``degrees`` the sentence has angles in degrees.
        """
        rows = self._one_pose(pose)
        starts = self._initial if start is None else self._joint_rows("start", start, degrees)
        return self._machine._model.diagnose(self._index, rows, starts, tool_length, degrees)

    def __repr__(self) -> str:
        """The id, tool and part."""
        return f'<trunnion.Stream {self._id}: tool "{self._tool}", part "{self._part}">'

    def _one_pose(self, pose: npt.ArrayLike) -> npt.NDArray[np.float64]:
        rows, _ = _pose_rows(pose)
        if len(rows) != 1:
            refuse("pose", "give a single pose")
        return rows

    def _joint_rows(
        self, name: str, joints: npt.ArrayLike, degrees: bool
    ) -> npt.NDArray[np.float64]:
        rows = np.asarray(joints, dtype=float)
        if rows.ndim not in (1, 2) or rows.shape[-1] != len(self._axes):
            names = ", ".join(axis.name for axis in self._axes)
            refuse(name, f"give a value for each of the axes {names}, in one row or several")
        rows = np.atleast_2d(rows)
        return np.where(self._rotary, np.radians(rows), rows) if degrees else rows

    def _options(
        self,
        limits: bool,
        locks: Iterable[str],
        tool_length: float,
        start_from: str,
        tolerance: float = 1e-12,
        max_iterations: int = 60,
    ) -> _trunnion.InverseOptions:
        if start_from not in ("previous", "given", "search"):
            refuse("start_from", f'"{start_from}" is not known; give previous, given or search')
        names = [axis.name for axis in self._axes]
        for name in locks:
            if name not in names:
                refuse("locks", f'there is no axis "{name}"; the stream has {", ".join(names)}')
        return _trunnion.InverseOptions(
            limits=limits,
            tool_length=tool_length,
            locks=[names.index(name) for name in locks],
            tolerance=tolerance,
            max_iterations=max_iterations,
            start_from=getattr(_trunnion.StartFrom, start_from),
        )

    def _solutions(
        self, solved: _trunnion.SolvedPoses, degrees: bool, is_single: bool
    ) -> Solutions:
        joints, converged, position_error, direction_error = solved
        if degrees:
            joints = np.where(self._rotary, np.degrees(joints), joints)
            direction_error = np.degrees(direction_error)
        arrays = (joints, converged, position_error, direction_error)
        if is_single:
            arrays = (joints[0], converged[0], position_error[0], direction_error[0])
        names = tuple(axis.name for axis in self._axes)
        return Solutions(names, self._rotary.copy(), degrees, *arrays)


class Machine:
    """A machine that was read from a TOML file or a URDF. ``load`` does the same.

    A URDF needs the names of two links that stand for the mounts: the tool's, whose z axis points
    from the tool's end to its shank, and the part's.
    """

    def __init__(
        self,
        file: Union[str, os.PathLike[str]],
        *,
        tool_link: Optional[str] = None,
        part_link: Optional[str] = None,
    ) -> None:
        self._model = _trunnion.Model.load(os.fspath(file), tool_link, part_link)
        self._axes = tuple(Axis(**axis) for axis in self._model.axes)
        self._mounts = tuple(Mount(**mount) for mount in self._model.mounts)

    @property
    def file(self) -> str:
        """The machine file."""
        return self._model.file

    @property
    def name(self) -> str:
        """What the file calls the machine."""
        return self._model.name

    @property
    def length_unit(self) -> str:
        """The unit of all lengths: "mm" or "inch"."""
        return self._model.length_unit

    @property
    def axes(self) -> tuple[Axis, ...]:
        """The axes in the file's order."""
        return self._axes

    @property
    def mounts(self) -> tuple[Mount, ...]:
        """The mounts in the file's order."""
        return self._mounts

    @property
    def streams(self) -> tuple[Stream, ...]:
        """The streams in the file's order."""
        return tuple(Stream(self, index) for index in range(len(self._model.streams)))

    def stream(self, id: Optional[int] = None) -> Stream:
        """The stream of this id, or the first one."""
        return Stream(self, 0 if id is None else self._model.index_of(id))

    def solve(
        self,
        toolpath: Union[Toolpath, str, os.PathLike[str], npt.ArrayLike],
        *,
        stream: Optional[int] = None,
        operation_streams: Optional[Mapping[str, int]] = None,
        tool_length: Optional[float] = None,
        locks: Optional[Mapping[str, float]] = None,
        tolerance: float = 1e-12,
        max_iterations: int = 60,
        linear_tol: Optional[float] = None,
        angle_tol: Optional[float] = None,
        points_only: bool = False,
        pole_cone: Optional[float] = None,
        start: str = "home",
        prefer: str = "",
        weight_travel: float = 1.0,
        weight_limits: float = 1.0,
        weight_pole: float = 1.0,
        weight_preference: float = 10.0,
        rewind: str = "rapids",
        branch_change: str = "rapids",
        retract: Optional[float] = None,
        tool_roll: str = "fixed",
        tool_roll_reference: Sequence[float] = (1.0, 0.0, 0.0),
        degrees: bool = False,
    ) -> Motion:
        """Plans the motion of the axes along a toolpath, as ``trunnion solve`` does.

        ``toolpath`` is a ``Toolpath``, a file or an array with rows x, y, z, i, j, k. The options
        are the program's: ``stream`` and ``operation_streams`` (names of operations to ids of
        streams); ``tool_length``, otherwise as the toolpath says; ``locks`` (axes to the values at
        which they stay); ``tolerance`` and ``max_iterations`` of one solve; ``linear_tol`` and
        ``angle_tol``, how far the tool may stray between two points, otherwise 0.01 mm or 0.0005
        inch and 0.05 degrees; ``points_only``; ``pole_cone``, otherwise 2 degrees; ``start``,
        "home" or "free"; ``prefer``, as in "A-"; the weights; ``rewind`` and ``branch_change``,
        "rapids" or "retract"; ``retract``, otherwise 50 mm or 2 inch; ``tool_roll``, "fixed",
        "feed", "search" or "open", and its reference.

        Angles, those of locks and of what is returned too, are radians, or degrees with
        ``degrees``. A point that is not reached fails by itself: look at ``Motion.converged`` and
        at the events.
        """
        options = _trunnion.PlanOptions()
        options.stream = stream
        options.operation_streams = [
            f"{name}={id}" for name, id in (operation_streams or {}).items()
        ]
        options.tool_length = tool_length
        options.locks = [f"{name}={float(value)!r}" for name, value in (locks or {}).items()]
        options.tolerance = tolerance
        options.max_iterations = max_iterations
        options.linear_tol = linear_tol
        if angle_tol is not None:
            options.angle_tol_deg = angle_tol if degrees else float(np.degrees(angle_tol))
        options.points_only = points_only
        if pole_cone is not None:
            options.pole_cone_deg = pole_cone if degrees else float(np.degrees(pole_cone))
        options.start = start
        options.prefer = prefer
        options.weights = (weight_travel, weight_limits, weight_pole, weight_preference)
        options.rewind = rewind
        options.branch_change = branch_change
        options.retract = retract
        options.tool_roll = tool_roll
        options.roll_reference = [float(number) for number in tool_roll_reference]
        options.in_radians = not degrees
        path = path_of(toolpath, self.length_unit)
        return self._motion(_trunnion.plan(self._model, path._path, options), degrees)

    def __repr__(self) -> str:
        """The name, and the names of the axes."""
        return f'<trunnion.Machine "{self.name}": {", ".join(axis.name for axis in self.axes)}>'

    @staticmethod
    def _motion(columns: _trunnion.MotionColumns, degrees: bool) -> Motion:
        sentences = columns["warnings"].splitlines()
        for sentence in sentences:
            warnings.warn(sentence, stacklevel=3)
        joints, direction_error = columns["joints"], columns["direction_error"]
        if degrees:
            joints = np.where(columns["rotary"], np.degrees(joints), joints)
            direction_error = np.degrees(direction_error)
        bits = columns["flags"]
        return Motion(
            axes=columns["axes"],
            rotary=columns["rotary"],
            degrees=degrees,
            joints=joints,
            point=columns["point"],
            line=columns["line"],
            asked=columns["asked"],
            position_error=columns["position_error"],
            direction_error=direction_error,
            branch=columns["branch"],
            flags={
                name: (bits >> place & 1).astype(bool)
                for place, name in enumerate(_trunnion.FLAG_NAMES)
            },
            events=[Event(*event) for event in columns["events"]],
            warnings=sentences,
        )


def load(
    file: Union[str, os.PathLike[str]],
    *,
    tool_link: Optional[str] = None,
    part_link: Optional[str] = None,
) -> Machine:
    """Reads a machine from a TOML file or, with the links that stand for its mounts, a URDF."""
    return Machine(file, tool_link=tool_link, part_link=part_link)
