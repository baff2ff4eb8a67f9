// Compiled without access control: the Jacobian of a stream is its own.

#include <benchmark/benchmark.h>

#include "Stages.h"

namespace bench
{

std::function<void()> LibraryForward(const Subject& subject, const std::vector<JointValues>& joints)
{
    std::vector<IkJtStateVector> all;
    all.reserve(joints.size());
    for (const JointValues& values : joints) {
        all.push_back(subject.States(values));
    }
    return [&stream = subject.Stream(), all]() mutable {
        for (IkJtStateVector& states : all) {
            benchmark::DoNotOptimize(stream.SolveFK(states, false, nullptr, nullptr, false));
        }
    };
}

std::function<void()> LibraryJacobian(const Subject& subject, int count)
{
    IkJtStateVector home = subject.States(subject.home);
    return [&stream = subject.Stream(), home, count,
            reference = subject.TargetAt(subject.home)]() mutable {
        home.CommitValuesToJoints();
        stream.InitializeIkSolver(false);
        TNT::Array2D<double> jacobian;
        for (int i = 0; i < count; ++i) {
            stream.ComputePartialJacobian(reference, jacobian, 1, false);
            benchmark::DoNotOptimize(jacobian[0][0]);
        }
    };
}

} // namespace bench
