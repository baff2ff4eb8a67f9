#include "plain/PlainSolvers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace plain
{

namespace
{

constexpr double kOneDegree = 0.017453292519943278;

bool HoldSameJoints(const States& a, const States& b)
{
    bool areSame = a.Size() == b.Size();
    for (int i = 0; areSame && i < a.Size(); ++i) {
        areSame = a.Joint(i) == b.Joint(i);
    }
    return areSame;
}

/// Whole degrees, cut towards zero, of an angle in radians; as a 32-bit number, 0 for a NaN.
long long WholeDegrees(double angle)
{
    const double degrees = angle * 180 / 3.14159265358979;
    if (std::isnan(degrees)) {
        return 0;
    }
    if (degrees >= std::numeric_limits<int>::max()) {
        return std::numeric_limits<int>::max();
    }
    if (degrees <= std::numeric_limits<int>::min()) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<long long>(degrees);
}

bool Contains(const std::vector<long long>& numbers, long long wanted)
{
    return std::find(numbers.begin(), numbers.end(), wanted) != numbers.end();
}

/// Start angles of a joint [deg].
std::vector<long long> Candidates(const IkJoint& joint)
{
    const long long low = WholeDegrees(joint.GetLowBound());
    const long long high = WholeDegrees(joint.GetHiBound());
    std::vector<long long> all;
    for (const long long offset : {0, 90, 180, -90}) {
        long long candidate = WholeDegrees(joint.GetCurValue()) + offset;
        if (candidate > high) {
            candidate = high;
        } else if (candidate < low) {
            candidate = low;
        }
        if (!Contains(all, candidate)) {
            all.push_back(candidate);
        }
    }
    // Negative ones that stand a full turn below another make room for the rest; then all but one
    // of the places so freed are filled with what stood there before.
    std::vector<long long> kept;
    for (const long long candidate : all) {
        if (candidate >= 0 || !Contains(all, candidate + 360)) {
            kept.push_back(candidate);
        }
    }
    const std::size_t size = kept.size() == all.size() ? all.size() : all.size() - 1;
    while (kept.size() < size) {
        kept.push_back(all[kept.size() + 1]);
    }
    return kept;
}

/// Every choice of one candidate a joint, the last joint's changing first.
std::vector<std::vector<long long>> Combinations(const std::vector<std::vector<long long>>& choices)
{
    std::vector<std::vector<long long>> combinations{{}};
    for (const std::vector<long long>& choice : choices) {
        std::vector<std::vector<long long>> longer;
        for (const std::vector<long long>& combination : combinations) {
            for (const long long candidate : choice) {
                longer.push_back(combination);
                longer.back().push_back(candidate);
            }
        }
        combinations = longer;
    }
    return combinations;
}

std::vector<Sample> SamplesFrom(const Fields& fields)
{
    std::vector<int> sampled; // state indices
    std::vector<std::vector<long long>> choices;
    for (const int index : fields.rotaryIndices) {
        if (!fields.lockedFlags[static_cast<std::size_t>(index)]) {
            sampled.push_back(index);
            choices.push_back(Candidates(*fields.states.Joint(index)));
        }
    }
    Sample sample;
    sample.start = fields.states;
    std::vector<Sample> samples{sample};
    if (sampled.empty() || sampled.size() > 3) {
        return samples;
    }
    const std::vector<std::vector<long long>> combinations = Combinations(choices);
    for (std::size_t c = 1; c < combinations.size(); ++c) { // the unchanged start is the first
        for (std::size_t i = 0; i < sampled.size(); ++i) {
            sample.start.SetValue(sampled[i], static_cast<double>(combinations[c][i]) * kOneDegree);
        }
        samples.push_back(sample);
    }
    return samples;
}

bool AreSame(const States& a, const States& b)
{
    bool areSame = HoldSameJoints(a, b);
    for (int i = 0; areSame && i < a.Size(); ++i) {
        areSame = !(std::fabs(a.Value(i) - b.Value(i)) > 0.1); // [length] and [rad] alike
    }
    return areSame;
}

} // namespace

void RejectDuplicates(std::vector<Sample>& samples)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t j = i + 1; j < samples.size(); ++j) {
            if (!samples[i].rejected && AreSame(samples[i].result, samples[j].result)) {
                samples[j].rejected = true;
            }
        }
    }
}

bool PseudoInverseSolver::SetStart(const States& states)
{
    const bool areTheStreams = HoldSameJoints(JointStates(stream), states);
    if (areTheStreams) {
        start = states;
    }
    return areTheStreams;
}

bool PseudoInverseSolver::SolveIK(const EndState& target, States& result, bool toolOnly,
                                  IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    fields = Initialize(stream, start ? *start : JointStates(stream), lockRotary);
    const Criteria criteria{maxIterations, tolerance, kSolverDirectionTolerance};
    return Iterate(stream, target, result, toolOnly, limitType, criteria, fields, error);
}

bool HybridSolver::SetStart(const States& states)
{
    const bool areTheStreams = HoldSameJoints(JointStates(stream), states);
    if (areTheStreams) {
        start = states;
    }
    return areTheStreams;
}

bool HybridSolver::SolveIK(const EndState& target, States& result, bool toolOnly,
                           IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    fields = Initialize(stream, start ? *start : JointStates(stream), lockRotary);
    samples = SamplesFrom(fields);
    for (Sample& sample : samples) {
        PseudoInverseSolver solver(stream);
        solver.SetMaxIterations(10);
        solver.SetStart(sample.start);
        sample.rejected = !solver.SolveIK(target, sample.result, toolOnly, limitType, lockRotary);
        sample.error = solver.Error();
    }
    RejectDuplicates(samples);
    return Choose(result);
}

bool HybridSolver::Choose(States& result)
{
    result = samples.front().result;
    if (analyst) {
        analyst(fields.states, samples);
        result = samples.empty() ? result : samples.back().result;
        return !samples.empty();
    }
    for (const Sample& sample : samples) {
        if (!sample.rejected) {
            result = sample.result;
            return true;
        }
    }
    return false;
}

} // namespace plain
