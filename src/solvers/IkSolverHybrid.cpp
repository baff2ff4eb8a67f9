#include "IkSolver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "geometry/Angles.h"
#include "geometry/Trace.h"
#include "machine/SoleSolve.h"
#include "model/Indexing.h"

using trunnion::Count;
using trunnion::ToIndex;

namespace
{

constexpr int kIterationsPerSample = 10;
constexpr double kSameLinear = 0.1; // [length]
constexpr double kSameRotary = 0.1; // [rad]
constexpr int kMostSampledJoints = 3;

/// A sampled joint and its start angles in whole degrees.
struct SampledJoint
{
    int stateIndex;
    std::vector<int> candidates_deg;
};

/// Whole degrees, cut towards zero; beyond 32 bits the nearest number there, for a NaN 0.
int WholeDegrees(double radians)
{
    constexpr double kMost = std::numeric_limits<int>::max();
    constexpr double kLeast = std::numeric_limits<int>::min();
    const double degrees = trunnion::ToDegrees(radians);
    return std::isnan(degrees) ? 0 : static_cast<int>(std::min(std::max(degrees, kLeast), kMost));
}

bool Contains(const std::vector<int>& list, std::int64_t value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

/// The start angles of a joint: a quarter, a half and three quarters of a turn on from where it
/// stands, inside its bounds, each once.
std::vector<int> Candidates(const IkJoint& joint)
{
    constexpr std::array kOffsets{0, 90, 180, -90}; // [deg]
    const int current = WholeDegrees(joint.GetCurValue());
    const int high = WholeDegrees(joint.GetHiBound());
    const int low = WholeDegrees(joint.GetLowBound());
    std::vector<int> candidates;
    for (const int offset : kOffsets) {
        std::int64_t candidate = std::int64_t{offset} + current;
        if (candidate > high) {
            candidate = high;
        } else if (candidate < low) {
            candidate = low;
        }
        if (!Contains(candidates, candidate)) {
            candidates.push_back(static_cast<int>(candidate));
        }
    }
    const std::vector<int> all = candidates;
    const auto rest = std::remove_if(candidates.begin(), candidates.end(), [&all](int candidate) {
        return candidate < 0 && Contains(all, std::int64_t{candidate} + 360);
    });
    if (rest != candidates.end()) {
        candidates.erase(rest); // kept on purpose: one element, however many were moved out
    }
    return candidates;
}

/// Moves on to the next combination, the last joint's candidate first; false after the last one.
bool Advance(std::vector<std::size_t>& choice, const std::vector<SampledJoint>& joints)
{
    for (std::size_t i = choice.size(); i-- > 0;) {
        if (++choice[i] < joints[i].candidates_deg.size()) {
            return true;
        }
        choice[i] = 0;
    }
    return false;
}

} // namespace

IkSolutionAnalyst::~IkSolutionAnalyst() = default;

IkSolverHybrid::IkSolverHybrid() = default;
IkSolverHybrid::IkSolverHybrid(IkStream* ofStream) : IkSolver(ofStream) {}
IkSolverHybrid::IkSolverHybrid(const IkSolverHybrid& other) = default;
IkSolverHybrid& IkSolverHybrid::operator=(const IkSolverHybrid& other)
{
    if (this == &other) {
        return *this;
    }
    std::vector<IkSolverSampleItem> newSamples = other.sampleList; // before anything changes
    IkSolver::operator=(other);
    sampleList.swap(newSamples);
    analyst = other.analyst;
    return *this;
}
IkSolverHybrid::~IkSolverHybrid() = default;

void IkSolverHybrid::Reset() {} // kept on purpose: neither the samples nor the base are touched

void IkSolverHybrid::SetAnalystObj(IkSolutionAnalyst* newAnalyst)
{
    analyst = newAnalyst;
}
IkSolutionAnalyst* IkSolverHybrid::GetAnalystObj() const
{
    return analyst;
}
std::vector<IkSolverSampleItem>& IkSolverHybrid::GetSampleList()
{
    return sampleList;
}

bool IkSolverHybrid::SetupSampleItems()
{
    std::vector<SampledJoint> joints;
    for (const int index : RotaryJointIndices) {
        const IkJoint* joint = SolverJtStates.GetState(index).GetJoint();
        if (joint != nullptr && trunnion::IsInRange(index, LockedFlags) &&
            !LockedFlags[ToIndex(index)]) {
            joints.push_back({index, Candidates(*joint)});
        }
    }

    IkSolverSampleItem item;
    item.startStates = SolverJtStates;
    item.stream = streamPtr;
    sampleList.assign(1, item);
    if (joints.empty() || Count(joints) > kMostSampledJoints) {
        return true;
    }
    // The first combination is left out: the unchanged start stands for it.
    std::vector<std::size_t> choice(joints.size(), 0);
    while (Advance(choice, joints)) {
        for (std::size_t i = 0; i < joints.size(); ++i) {
            const int degrees = joints[i].candidates_deg[choice[i]];
            item.startStates.GetState(joints[i].stateIndex)
                .SetValue(degrees * trunnion::kOneDegree);
        }
        sampleList.push_back(item);
    }
    return true;
}

void IkSolverHybrid::EliminateDuplicates(std::vector<IkSolverSampleItem>& list)
{
    for (std::size_t i = 0; i < list.size(); ++i) {
        for (std::size_t j = i + 1; j < list.size() && !list[i].rejected; ++j) {
            if (list[i].resultStates.Compare(list[j].resultStates, kSameLinear, kSameRotary) == 0) {
                list[j].rejected = true;
            }
        }
    }
}

void IkSolverHybrid::DumpSampleList(std::vector<IkSolverSampleItem>& list)
{
    for (int i = 0; i < Count(list); ++i) {
        const IkSolverSampleItem& item = list[ToIndex(i)];
        if (!item.rejected) {
            item.resultStates.TraceDump(
                trunnion::TraceSampleCaption(L"  Sample States [%d]", i).c_str());
        }
    }
}

bool IkSolverHybrid::SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                             IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    if (streamPtr == nullptr) {
        return false;
    }
    const trunnion::SoleSolve sole(trunnion::SoleSolve::Use::Solve, streamPtr);
    const bool isTraced = trunnion::Tracing().hybridSampling;
    Initialize(lockRotary);
    if (isTraced) {
        TraceDump();
    }
    SetupSampleItems();
    IkJtStateVector start;
    IkJtStateVector found;
    for (int i = 0; i < Count(sampleList); ++i) {
        // Copies: a node that is asked may solve by this very object and replace the list.
        start = sampleList[ToIndex(i)].startStates;
        found = sampleList[ToIndex(i)].resultStates;
        if (isTraced) {
            start.TraceDump(trunnion::TraceSampleCaption(L"Sample States [%d]", i).c_str());
        }
        IkSolverPsuedoInverse solver(sampleList[ToIndex(i)].stream);
        solver.SetMaxIterations(kIterationsPerSample);
        solver.SetStartingJtStates(&start);
        const bool isSolved = solver.SolveIK(target, found, toolOnly, limitType, lockRotary);
        if (trunnion::IsInRange(i, sampleList)) {
            IkSolverSampleItem& item = sampleList[ToIndex(i)];
            item.resultStates = found;
            item.rejected = !isSolved;
            item.errorValue = solver.GetCurErrorval();
        }
    }
    if (isTraced) {
        DumpSampleList(sampleList);
    }
    EliminateDuplicates(sampleList);
    if (isTraced) {
        DumpSampleList(sampleList);
    }
    result.Reset();
    return Choose(result);
}

/// Takes the analyst's choice, or else the first sample that is not rejected.
bool IkSolverHybrid::Choose(IkJtStateVector& result)
{
    if (sampleList.empty()) {
        return false;
    }
    if (analyst != nullptr) {
        const IkJtStateVector fallback = sampleList.front().resultStates;
        analyst->AnalyzeSolutions(sampleList.front().stream, &SolverJtStates, sampleList);
        result = sampleList.empty() ? fallback : sampleList.back().resultStates;
        return !sampleList.empty();
    }
    const auto found = std::find_if(sampleList.begin(), sampleList.end(),
                                    [](const IkSolverSampleItem& item) { return !item.rejected; });
    const bool isSolved = found != sampleList.end();
    result = isSolved ? found->resultStates : sampleList.front().resultStates;
    return isSolved;
}
