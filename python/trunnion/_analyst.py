"""The chooser among the solutions of the hybrid solver."""

from __future__ import annotations

import abc

from ._trunnion import IkJtStateVector, IkSolverSampleItem, IkStream


class IkSolutionAnalyst(abc.ABC):
    """Derive from this, and hand an object to ``IkSolverHybrid.SetAnalystObj``.

    The solver asks it after every sample is solved. It may solve while it is asked, with any
    solver. What it raises comes out of the ``SolveIK`` that asked it.
    """

    @abc.abstractmethod
    def AnalyzeSolutions(
        self,
        stream: IkStream,
        start_states: IkJtStateVector,
        samples: list[IkSolverSampleItem],
    ) -> object:
        """Reorders or edits ``samples``; the solver returns the last one's result, whatever its flag.

        Where none are left it returns the result of the first one there was, and no success. The
        returned value is ignored.
        """
