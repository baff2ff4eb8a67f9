"""Where does the tool stand? Moves the axes of a mill and prints the tool's pose in part
coordinates."""

from example_mill import ExampleMill


def print_tool(when, pose):
    part_to_tool = pose.GetCompleteState()
    x, y, z = (part_to_tool[row, 3] for row in range(3))
    i, j, k = (part_to_tool[row, 2] for row in range(3))
    print(f"{when:<22} position {x:8.3f} {y:8.3f} {z:8.3f}   direction {i:6.3f} {j:6.3f} {k:6.3f}")


mill = ExampleMill()
print_tool("all axes at zero:", mill.stream.SolveFK())

# Joint values come from the joints themselves ...
mill.x.SetCurValue(100)
mill.z.SetCurValue(50)
print_tool("X 100, Z 50:", mill.stream.SolveFK())

# ... or from a state vector, which leaves the joints alone.
states = mill.stream.GetJointStates()
states[states.FindStateByJointPtr(mill.c)].SetValue(1.5707963267948966)
print_tool("... and C 90 degrees:", mill.stream.SolveFK(states))
print(f"the C joint still stands at {mill.c.GetCurValue():.0f}")
