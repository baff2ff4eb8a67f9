"""Which joint values reach a pose? Solves one, commits it, and shows what a failure looks like."""

from example_mill import ExampleMill

mill = ExampleMill()
mill.a.SetCurValue(0.1)  # at A = 0 turning C does not turn the tool: start beside that

is_reached, answer = mill.stream.SolveIK(ExampleMill.leaning_tool(30))
assert is_reached
answer.CommitValuesToJoints()  # a solve never moves the joints by itself
joints = (mill.x, mill.y, mill.z, mill.a, mill.c)
print("reached at", "  ".join(f"{joint.GetName()} {joint.GetCurValue():.3f}" for joint in joints))

# The last step of a failed solve goes without limits, so that the answer can say which joints the
# target would drive out of them.
is_reached, answer = mill.stream.SolveIK(ExampleMill.leaning_tool(900))
print(
    "reached" if is_reached else "not reached",
    ", 870 further out:",
    *(f" {name} is beyond its limits" for name in answer.GetNameVector()),
    sep="",
)
