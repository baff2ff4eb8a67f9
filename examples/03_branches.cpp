// A tool direction has two pairs of rotary values: lists them, and lets an analyst choose.

#include <algorithm>
#include <cstdio>

#include "ExampleMill.h"

namespace
{

double ValueOf(const IkJtStateVector& states, const IkJoint& joint)
{
    double value = 0.0;
    states.FindValFromPtr(&joint, value);
    return value;
}

void Print(const char* what, const IkJtStateVector& states, const ExampleMill& mill)
{
    std::printf("%s A %6.3f  C %6.3f\n", what, ValueOf(states, mill.a), ValueOf(states, mill.c));
}

/// Prefers solutions that tilt the table forward: the solver returns the last sample.
struct TiltForward : IkSolutionAnalyst
{
    const IkJoint* tilt{nullptr};

    bool AnalyzeSolutions(IkStream* /*stream*/, IkJtStateVector* /*startStates*/,
                          std::vector<IkSolverSampleItem>& samples) override
    {
        std::stable_partition(samples.begin(), samples.end(), [this](const auto& sample) {
            return sample.rejected || ValueOf(sample.resultStates, *tilt) < 0.0;
        });
        return true;
    }
};

} // namespace

int main()
{
    ExampleMill mill;
    IkEndState target = ExampleMill::LeaningTool(30);
    IkSolverHybrid solver(&mill.stream);
    IkJtStateVector answer;
    TiltForward analyst;
    analyst.tilt = &mill.a;
    solver.SetAnalystObj(&analyst);
    solver.SolveIK(target, answer, false, IkJoint::JtLimitAll, false);
    for (const IkSolverSampleItem& sample : solver.GetSampleList()) {
        if (!sample.rejected) {
            Print("a solution at", sample.resultStates, mill);
        }
    }
    Print("chosen:      ", answer, mill);
    return 0;
}
