#include <benchmark/benchmark.h>

#include "Stages.h"
#include "plain/PlainStages.h"

namespace bench
{

std::function<void()> PlainForward(const Subject& subject, const std::vector<JointValues>& joints)
{
    std::vector<plain::States> all;
    all.reserve(joints.size());
    for (const JointValues& values : joints) {
        all.emplace_back(subject.States(values));
    }
    return [&stream = subject.Stream(), all]() mutable {
        for (plain::States& states : all) {
            benchmark::DoNotOptimize(
                plain::SolveFK(stream, states, false, nullptr, nullptr, false)[0][0]);
        }
    };
}

std::function<void()> PlainJacobian(const Subject& subject, int count)
{
    IkJtStateVector home = subject.States(subject.home);
    return [&stream = subject.Stream(), home, count,
            reference = plain::EndState(subject.TargetAt(subject.home))]() mutable {
        home.CommitValuesToJoints();
        const plain::Fields fields = plain::Initialize(stream, false);
        for (int i = 0; i < count; ++i) {
            benchmark::DoNotOptimize(
                plain::PartialJacobian(stream, fields, reference, 1, false)[0][0]);
        }
    };
}

} // namespace bench
