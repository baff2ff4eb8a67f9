"""Pictures for notebooks."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Union

import numpy as np

from ._machine import Solutions
from ._motion import Motion
from ._toolpath import Toolpath

if TYPE_CHECKING:
    from matplotlib.figure import Figure  # type: ignore[import]


def _new_figure(**how: Any) -> Any:
    try:
        from matplotlib.figure import Figure
    except ImportError as missing:
        raise ImportError(
            "trunnion.plot draws with matplotlib, which is not installed; install it, on Debian "
            "as python3-matplotlib"
        ) from missing
    return Figure(constrained_layout=True, **how)


def _draw_path(at: Any, points: Any, rapid: Any) -> None:
    breaks = np.flatnonzero(rapid)
    for cut in np.split(points, breaks):
        at.plot(*cut[:, :3].T, color="tab:blue", linewidth=1)
    for end in breaks[breaks > 0]:
        at.plot(*points[end - 1 : end + 1, :3].T, color="tab:gray", linewidth=0.5, linestyle=":")
    at.set(xlabel="x", ylabel="y", zlabel="z")
    spans = np.ptp(points[:, :3], axis=0)
    at.set_box_aspect(np.maximum(spans, 0.05 * max(spans.max(), 1e-9)))


def _draw_joints(at: Any, what: Union[Motion, Solutions]) -> None:
    angle = "deg" if what.degrees else "rad"
    joints = np.atleast_2d(what.joints)
    for column, (axis, name) in enumerate(zip(at, what.axes)):
        axis.plot(joints[:, column], linewidth=1)
        axis.set_ylabel(f"{name} [{angle}]" if what.rotary[column] else name)
        axis.grid(alpha=0.3)
    at[-1].set_xlabel("row")


def plot(what: Union[Motion, Solutions, Toolpath]) -> Figure:
    """Draws a motion, solutions or a toolpath with matplotlib; a notebook shows what is returned.

    A toolpath is drawn in part coordinates, rapids dotted; joint values over their rows, a motion's
    with its flips and rewinds marked, and its path beside it.
    """
    if isinstance(what, Toolpath):
        figure = _new_figure()
        _draw_path(figure.add_subplot(projection="3d"), what.points, what.rapid)
        return figure
    if not isinstance(what, (Motion, Solutions)):
        raise TypeError("plot draws a Motion, Solutions or a Toolpath")
    rows = len(what.axes)
    height = max(3.0, 1.3 * rows)
    if isinstance(what, Solutions):
        figure = _new_figure(figsize=(7, height))
        _draw_joints(figure.subplots(rows, 1, sharex=True, squeeze=False)[:, 0], what)
        return figure
    figure = _new_figure(figsize=(12, height))
    left, right = figure.subfigures(1, 2)
    at = left.subplots(rows, 1, sharex=True, squeeze=False)[:, 0]
    _draw_joints(at, what)
    for row in np.flatnonzero(what.flags["flip"] | what.flags["rewind"]):
        for axis in at:
            axis.axvline(row, color="tab:red", linewidth=0.5)
    _draw_path(right.add_subplot(projection="3d"), what.asked, what.flags["rapid"])
    return figure
