// Where does the tool stand? Moves the axes of a mill and prints the tool's pose in part
// coordinates.

#include <cstdio>

#include "ExampleMill.h"

namespace
{

void PrintTool(const char* when, const IkEndState& pose)
{
    const IkXformMat& partToTool = pose.GetCompleteState();
    std::printf("%-22s position %8.3f %8.3f %8.3f   direction %6.3f %6.3f %6.3f\n", when,
                partToTool[0][3], partToTool[1][3], partToTool[2][3], partToTool[0][2],
                partToTool[1][2], partToTool[2][2]);
}

} // namespace

int main()
{
    ExampleMill mill;
    PrintTool("all axes at zero:", mill.stream.SolveFK(false));

    // Joint values come from the joints themselves ...
    mill.x.SetCurValue(100);
    mill.z.SetCurValue(50);
    PrintTool("X 100, Z 50:", mill.stream.SolveFK(false));

    // ... or from a state vector, which leaves the joints alone.
    IkJtStateVector states = mill.stream.GetJointStates();
    states.GetState(states.FindStateByJointPtr(&mill.c)).SetValue(1.5707963267948966);
    PrintTool("... and C 90 degrees:", mill.stream.SolveFK(states, false, nullptr, nullptr, false));
    std::printf("the C joint still stands at %.0f\n", mill.c.GetCurValue());
    return 0;
}
