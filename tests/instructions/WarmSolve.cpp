// One warm solve, for counting the instructions that it takes:
//
//   warm_solve MACHINE [TOOL_LINK PART_LINK]   solves a few times; the last is MeasuredSolve's
//   warm_solve --platform                      prints what the counts depend on beside the sources

#include <algorithm>
#include <cstdint>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <IkSolver.h>

#include "digest/Digest.h"
#include "machine/LoadedMachine.h"

/// Stands alone, so that what is counted begins and ends with it.
[[gnu::noinline]] bool MeasuredSolve(IkSolver& solver, IkEndState& target, IkJtStateVector& result)
{
    return solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
}

namespace
{

/// The stream's joints away from where they stand, within their bounds.
IkJtStateVector StatesAt(const IkStream& stream, double turn, double way)
{
    IkJtStateVector states = stream.GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        const IkJoint& joint = *state.GetJoint();
        const double value = state.GetValue() + (joint.IsRotary() ? turn : way);
        state.SetValue(std::min(std::max(value, joint.GetLowBound()), joint.GetHiBound()));
    }
    return states;
}

/// Position and tool direction, and where there are joints to spare the whole orientation.
IkEndState TargetAt(IkStream& stream, IkJtStateVector states)
{
    IkEndState target = stream.SolveFK(states, false, nullptr, nullptr, false);
    bool all[] = {true, true, true, true};
    if (states.Size() > 5) {
        target.SetFilter(all);
    }
    return target;
}

void Solve(const host::LoadedMachine& machine, IkStream& stream)
{
    machine.MoveToInitial();
    StatesAt(stream, 0.3, 20.0).CommitValuesToJoints(); // away from poles
    IkEndState target = TargetAt(stream, StatesAt(stream, 0.05, 5.0));
    IkSolverPsuedoInverse solver(&stream);
    IkJtStateVector result;
    bool isSolved = true;
    for (int i = 0; i < 3; ++i) {
        isSolved = isSolved && solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    }
    if (!isSolved || !MeasuredSolve(solver, target, result)) {
        throw std::runtime_error("the solve failed");
    }
}

void Run(const std::vector<std::string>& arguments)
{
    if (arguments == std::vector<std::string>{"--platform"}) {
        std::cout << "g++ " << __VERSION__ << ", C library functions " << std::hex
                  << test::LibraryFunctions() << "\n";
        return;
    }
    if (arguments.size() != 1 && arguments.size() != 3) {
        throw std::runtime_error("warm_solve: give MACHINE, and for a URDF TOOL_LINK PART_LINK");
    }
    host::MountLinks links;
    if (arguments.size() == 3) {
        links = {arguments[1], arguments[2]};
    }
    host::LoadedMachine machine = host::LoadMachine(arguments[0], links);
    Solve(machine, *machine.StreamWithId(std::nullopt).stream);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        Run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 2;
    }
    return 0;
}
