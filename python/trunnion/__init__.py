"""Inverse kinematics for machine tools.

Two ways in:

- ``load`` reads a machine file. A ``Machine`` answers for its streams, each a tool and a part:
  ``Stream.forward`` (joint values to poses), ``Stream.inverse`` (poses to joint values), both for
  one pose or for arrays of them, ``Stream.branches`` (all ways to stand at a pose), and
  ``Machine.solve`` plans the motion along a whole toolpath.
- The ``Ik`` classes are the library itself, under the names that it has in C++: a tree of bodies
  and joints, chains, streams, state vectors and solver objects.

Lengths are in the machine's unit, ``Machine.length_unit``; angles are radians unless a call is
given ``degrees=True``. A pose is x, y, z, i, j, k: where the tool's end stands in part coordinates,
and its direction from there to its shank.

Calls from several threads are safe: the library solves one thing at a time, and the others wait.
"""

from ._analyst import IkSolutionAnalyst
from ._machine import Axis, Machine, Mount, Solutions, Stream, load
from ._motion import Event, Motion
from ._plot import plot
from ._toolpath import Operation, Toolpath
from ._trunnion import (
    IkBody,
    IkChain,
    IkEndState,
    IkJoint,
    IkJtPrism,
    IkJtRot,
    IkJtState,
    IkJtStateVector,
    IkMachine,
    IkNode,
    IkSolver,
    IkSolverHybrid,
    IkSolverPsuedoInverse,
    IkSolverSampleItem,
    IkStream,
    IkXformMat,
    InputError,
)
from ._version import __version__

__all__ = [
    "Axis",
    "Event",
    "IkBody",
    "IkChain",
    "IkEndState",
    "IkJoint",
    "IkJtPrism",
    "IkJtRot",
    "IkJtState",
    "IkJtStateVector",
    "IkMachine",
    "IkNode",
    "IkSolutionAnalyst",
    "IkSolver",
    "IkSolverHybrid",
    "IkSolverPsuedoInverse",
    "IkSolverSampleItem",
    "IkStream",
    "IkXformMat",
    "InputError",
    "Machine",
    "Motion",
    "Mount",
    "Operation",
    "Solutions",
    "Stream",
    "Toolpath",
    "__version__",
    "load",
    "plot",
]
