"""A tool direction has two pairs of rotary values: lists them, and lets an analyst choose."""

from example_mill import ExampleMill
from trunnion import IkSolutionAnalyst, IkSolverHybrid


class TiltForward(IkSolutionAnalyst):
    """Prefers solutions that tilt the table forward: the solver returns the last sample."""

    def __init__(self, tilt):
        self.tilt = tilt

    def AnalyzeSolutions(self, stream, start_states, samples):
        samples.sort(  # a sort keeps the order of what is alike
            key=lambda sample: not sample.rejected
            and sample.resultStates.FindValFromPtr(self.tilt) >= 0
        )


def print_states(what, states, mill):
    a, c = states.FindValFromPtr(mill.a), states.FindValFromPtr(mill.c)
    print(f"{what} A {a:6.3f}  C {c:6.3f}")


mill = ExampleMill()
solver = IkSolverHybrid(mill.stream)
solver.SetAnalystObj(TiltForward(mill.a))
_, answer = solver.SolveIK(ExampleMill.leaning_tool(30))
for sample in solver.GetSampleList():
    if not sample.rejected:
        print_states("a solution at", sample.resultStates, mill)
print_states("chosen:      ", answer, mill)
