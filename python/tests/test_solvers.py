"""Solver objects, and analysts written in Python."""

import numpy as np
import pytest

from trunnion import (
    IkJoint,
    IkSolutionAnalyst,
    IkSolver,
    IkSolverHybrid,
    IkSolverPsuedoInverse,
    IkSolverSampleItem,
)


class Noting(IkSolutionAnalyst):
    """Notes what it is shown."""

    def __init__(self):
        self.calls = []

    def AnalyzeSolutions(self, stream, start_states, samples):
        self.calls.append((stream, start_states.GetValVector().tolist(), list(samples)))


def test_plain_solver_measures_and_does_not_move(mill):
    solver = IkSolver(mill.stream)
    target = mill.leaning_tool(30)
    converged, _ = solver.SolveIK(target)
    assert not converged
    # 30^2 + 20^2 + 10^2, and 0.5 rad are 28.6479 deg
    assert solver.GetCurErrorval() == pytest.approx(1400 + np.degrees(0.5) ** 2)


def test_pseudo_inverse_converges_to_its_tolerance(mill):
    mill.a.SetCurValue(0.1)
    solver = IkSolverPsuedoInverse(mill.stream)
    assert solver.GetConvergenceTolerance() == 1e-12 and solver.GetMaxIterations() == 60
    converged, answer = solver.SolveIK(mill.leaning_tool(30))
    assert converged and solver.GetCurErrorval() <= 1e-12
    # The tool leans by 0.5 about the part's x axis turned by 0.7: the table does it all.
    assert answer.GetValVector()[3:].tolist() == pytest.approx([-0.5, -0.7], abs=1e-6)
    solver.SetMaxIterations(1)
    assert not solver.SolveIK(mill.leaning_tool(30))[0]


def test_start_states_are_a_copy(mill):
    solver = IkSolverPsuedoInverse(mill.stream)
    states = mill.stream.GetJointStates()
    states.SetValVector([0, 0, 0, 0.3, 2.0])
    solver.SetStartingJtStates(states)
    states.Reset()
    assert solver.GetStartStates().GetValVector().tolist() == [0, 0, 0, 0.3, 2.0]
    converged, answer = solver.SolveIK(mill.leaning_tool(30))
    # From there the other branch is near: A the other way, C half a turn on from -0.7.
    assert converged and answer.GetValVector()[3:].tolist() == pytest.approx(
        [0.5, np.pi - 0.7], abs=1e-6
    )
    solver.SetStartingJtStates(None)
    assert solver.GetStartStates() is None


def test_start_states_of_other_joints_are_refused(mill):
    solver = IkSolverPsuedoInverse(mill.stream)
    few = mill.stream.GetChain(0).GetJointStates()
    with pytest.raises(ValueError, match="begin with its GetJointStates"):
        solver.SetStartingJtStates(few)
    solver.SetStartingJtStates(mill.stream.GetJointStates())
    mill.stream.GetChain(0).RemoveTail()  # Z is no joint of the stream any more
    with pytest.raises(ValueError, match="other joints"):
        solver.SolveIK(mill.leaning_tool(30))


def test_hybrid_solver_lists_its_samples(mill):
    solver = IkSolverHybrid(mill.stream)
    converged, answer = solver.SolveIK(mill.leaning_tool(30))
    kept = [sample for sample in solver.GetSampleList() if not sample.rejected]
    assert converged and len(kept) == 4  # two branches, each at two turns of C
    assert answer.GetValVector().tolist() == kept[0].resultStates.GetValVector().tolist()
    assert all(sample.errorValue <= 1e-12 for sample in kept)
    assert kept[0].stream is mill.stream


def test_analyst_sees_start_and_samples(mill):
    mill.x.SetCurValue(3)
    solver, analyst = IkSolverHybrid(mill.stream), Noting()
    solver.SetAnalystObj(analyst)
    assert solver.GetAnalystObj() is analyst
    _, answer = solver.SolveIK(mill.leaning_tool(30))
    ((stream, start, samples),) = analyst.calls
    assert stream is mill.stream and start == [3, 0, 0, 0, 0]
    assert len(samples) == len(solver.GetSampleList()) > 4
    last = samples[-1].resultStates.GetValVector()
    assert answer.GetValVector().tolist() == last.tolist()  # the last one, whatever its flag


def test_analyst_edits_the_samples(mill):
    class Keeping(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            samples[:] = [sample for sample in samples if not sample.rejected][:2]
            for number, sample in enumerate(samples):
                sample.userValue1 = number
                sample.label = "kept"

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Keeping())
    converged, answer = solver.SolveIK(mill.leaning_tool(30))
    assert converged
    assert [(one.userValue1, one.label) for one in solver.GetSampleList()] == [
        (0, "kept"),
        (1, "kept"),
    ]
    second = solver.GetSampleList()[1].resultStates
    assert answer.GetValVector().tolist() == second.GetValVector().tolist()


def test_analyst_that_leaves_nothing_has_no_solution(mill):
    class Clearing(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            samples.clear()

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Clearing())
    converged, answer = solver.SolveIK(mill.leaning_tool(30))
    assert not converged and solver.GetSampleList() == []
    solver.SetAnalystObj(None)
    solver.SolveIK(mill.leaning_tool(30))
    first = solver.GetSampleList()[0].resultStates
    assert answer.GetValVector().tolist() == first.GetValVector().tolist()


@pytest.mark.parametrize("kind", [RuntimeError, KeyboardInterrupt, StopIteration, SystemExit])
def test_what_an_analyst_raises_reaches_the_caller(mill, kind):
    class Raising(Noting):
        def AnalyzeSolutions(self, stream, start_states, samples):
            raise kind("told so")

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Raising())
    for _ in range(2):
        with pytest.raises(kind, match="told so") as raised:
            solver.SolveIK(mill.leaning_tool(30))
        assert raised.traceback[-1].name == "AnalyzeSolutions"
    solver.SetAnalystObj(None)
    assert solver.SolveIK(mill.leaning_tool(30))[0]


@pytest.mark.parametrize("broken", [["no sample"], [None], [IkSolverSampleItem(), 3]])
def test_samples_that_are_none_are_refused(mill, broken):
    class Breaking(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            samples[:] = broken

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Breaking())
    with pytest.raises((RuntimeError, ValueError)):
        solver.SolveIK(mill.leaning_tool(30))
    solver.SetAnalystObj(None)
    assert solver.SolveIK(mill.leaning_tool(30))[0]


def test_sample_without_states_is_refused(mill):
    class Breaking(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            samples[-1].resultStates = None

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Breaking())
    with pytest.raises(ValueError, match="without states"):
        solver.SolveIK(mill.leaning_tool(30))


def test_analyst_may_solve(mill):
    class Refining(IkSolutionAnalyst):
        """Solves with another solver, and with the one that asks it."""

        def __init__(self, solver):
            self.solver, self.depth, self.answers = solver, 0, []

        def AnalyzeSolutions(self, stream, start_states, samples):
            self.answers.append(IkSolverPsuedoInverse(stream).SolveIK(mill.leaning_tool(40)))
            if self.depth < 3:
                self.depth += 1
                self.answers.append(self.solver.SolveIK(mill.leaning_tool(50)))

    mill.a.SetCurValue(0.1)
    solver = IkSolverHybrid(mill.stream)
    analyst = Refining(solver)
    solver.SetAnalystObj(analyst)
    _, answer = solver.SolveIK(mill.leaning_tool(30))
    assert analyst.depth == 3 and len(analyst.answers) == 7
    pose = mill.stream.SolveFK(answer).GetVector()
    assert pose[0] == pytest.approx(30, abs=1e-5)


def test_analyst_may_replace_itself(mill):
    class Leaving(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            solver.SetAnalystObj(None)
            samples.reverse()

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Leaving())
    assert solver.SolveIK(mill.leaning_tool(30))[0]
    assert solver.GetAnalystObj() is None


def test_analysts_have_the_method():
    with pytest.raises(TypeError, match="abstract"):
        type("Empty", (IkSolutionAnalyst,), {})()


def test_other_objects_are_no_analysts(mill):
    with pytest.raises(TypeError, match="derive it from IkSolutionAnalyst"):
        IkSolverHybrid(mill.stream).SetAnalystObj(object())


def test_a_solver_has_a_stream():
    for kind in (IkSolver, IkSolverPsuedoInverse, IkSolverHybrid):
        with pytest.raises(TypeError):
            kind(None)


def test_limits_are_kept_unless_said_otherwise(mill):
    mill.a.SetCurValue(0.1)
    solver = IkSolverPsuedoInverse(mill.stream)
    target = mill.leaning_tool(900)
    assert not solver.SolveIK(target)[0]
    converged, answer = solver.SolveIK(target, limit_type=IkJoint.JtLimitNone)
    assert converged and answer.FindValFromPtr(mill.x) > 500


def test_an_analyst_without_end_is_ended(mill):
    class Endless(IkSolutionAnalyst):
        def AnalyzeSolutions(self, stream, start_states, samples):
            solver.SolveIK(mill.leaning_tool(30))

    solver = IkSolverHybrid(mill.stream)
    solver.SetAnalystObj(Endless())
    with pytest.raises(RecursionError):
        solver.SolveIK(mill.leaning_tool(30))
    solver.SetAnalystObj(None)
    assert solver.SolveIK(mill.leaning_tool(30))[0]
