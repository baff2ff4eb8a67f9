#include "planner/Candidates.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include <IkSolver.h>

#include "planner/JointSpace.h"
#include "solve/SampledSolver.h"

namespace host
{

namespace
{

constexpr std::size_t kMostCandidates = 8; // as many as a six-axis arm has branches

bool AreFinite(const std::vector<double>& values)
{
    return std::all_of(values.begin(), values.end(),
                       [](double value) { return std::isfinite(value); });
}

} // namespace

bool IsConsistent(const CandidateBlock& block, std::size_t numAxes)
{
    const std::size_t candidates = block.branches.size();
    if (block.ends.empty() || !std::is_sorted(block.ends.begin(), block.ends.end()) ||
        block.ends.back() != candidates || block.parents.size() != candidates ||
        block.joints.size() != candidates * numAxes || !AreFinite(block.joints)) {
        return false;
    }
    std::size_t begin = 0;
    std::size_t before = kMostCandidates; // the block before this one has no more
    for (const std::uint32_t end : block.ends) {
        if (end - begin > kMostCandidates) {
            return false;
        }
        for (std::size_t i = begin; i < end; ++i) {
            if (block.parents[i] < -1 || block.parents[i] >= static_cast<int>(before) ||
                block.branches[i] < 0) {
                return false;
            }
        }
        before = end - begin;
        begin = end;
    }
    return (block.exits.empty() || block.exits.size() == before) &&
           std::all_of(block.exits.begin(), block.exits.end(), [numAxes](const JointValues& exit) {
               return exit.empty() || (exit.size() == numAxes && AreFinite(exit));
           });
}

CandidateTable CandidateTable::OfSlice(std::vector<const Axis*> ofAxes, CandidateBlock slice)
{
    CandidateTable table(std::move(ofAxes), std::max<std::size_t>(slice.ends.size(), 1),
                         Joint::ByParents);
    table.firstPoint = slice.firstPoint;
    table.numbers.push_back(slice.branches);
    table.blocks.push_back(std::move(slice));
    return table;
}

bool CandidateTable::Continues(const CandidateBlock& block) const
{
    const int before = blocks.empty() ? 0 : static_cast<int>(CountAt(EndPoint() - 1));
    const auto begin = block.parents.begin();
    return joint == Joint::ByExits ||
           std::all_of(begin, begin + static_cast<std::ptrdiff_t>(block.ends.front()),
                       [before](std::int8_t parent) { return parent < before; });
}

void CandidateTable::Append(CandidateBlock block)
{
    blocks.push_back(std::move(block));
    if (joint == Joint::ByExits) {
        LinkFirstPoint();
    }
    NumberBranches();
}

CandidateTable::Place CandidateTable::PlaceOf(std::size_t point) const
{
    const std::size_t block = (point - firstPoint) / blockSize;
    const std::size_t local = point - blocks[block].firstPoint;
    const std::vector<std::uint32_t>& ends = blocks[block].ends;
    return {block, local == 0 ? 0 : ends[local - 1], ends[local]};
}

std::size_t CandidateTable::EndPoint() const
{
    return blocks.empty() ? firstPoint : blocks.back().firstPoint + blocks.back().ends.size();
}

std::size_t CandidateTable::CountAt(std::size_t point) const
{
    const Place at = PlaceOf(point);
    return at.end - at.begin;
}

const double* CandidateTable::JointsAt(std::size_t point, std::size_t candidate) const
{
    const Place at = PlaceOf(point);
    return blocks[at.block].joints.data() + (at.begin + candidate) * axes.size();
}

int CandidateTable::BranchAt(std::size_t point, std::size_t candidate) const
{
    const Place at = PlaceOf(point);
    return numbers[at.block][at.begin + candidate];
}

int CandidateTable::ParentAt(std::size_t point, std::size_t candidate) const
{
    const Place at = PlaceOf(point);
    return blocks[at.block].parents[at.begin + candidate];
}

CandidateBlock CandidateTable::Slice(std::size_t begin, std::size_t end) const
{
    const auto at = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
    CandidateBlock slice;
    slice.firstPoint = begin;
    for (std::size_t point = begin; point < end;) {
        const Place from = PlaceOf(point);
        const CandidateBlock& block = blocks[from.block];
        const std::size_t stop = std::min(end, block.firstPoint + block.ends.size());
        const std::size_t until = PlaceOf(stop - 1).end;
        const auto taken = static_cast<std::uint32_t>(slice.branches.size() - from.begin);
        for (; point < stop; ++point) {
            slice.ends.push_back(block.ends[point - block.firstPoint] + taken);
        }
        slice.joints.insert(slice.joints.end(), block.joints.begin() + at(from.begin * axes.size()),
                            block.joints.begin() + at(until * axes.size()));
        slice.branches.insert(slice.branches.end(), numbers[from.block].begin() + at(from.begin),
                              numbers[from.block].begin() + at(until));
        slice.parents.insert(slice.parents.end(), block.parents.begin() + at(from.begin),
                             block.parents.begin() + at(until));
    }
    return slice;
}

/// Of the last block.
void CandidateTable::LinkFirstPoint()
{
    const std::vector<JointValues> none;
    const std::vector<JointValues>& exits =
        blocks.size() > 1 ? blocks[blocks.size() - 2].exits : none;
    const std::size_t point = blocks.back().firstPoint;
    for (std::size_t i = 0; i < CountAt(point); ++i) {
        const double* const values = JointsAt(point, i);
        const JointValues joints(values, values + axes.size());
        const auto from = std::find_if(exits.begin(), exits.end(), [&](const JointValues& exit) {
            return !exit.empty() && AreSameSolution(axes, joints, exit);
        });
        blocks.back().parents[i] =
            static_cast<std::int8_t>(from == exits.end() ? -1 : from - exits.begin());
    }
}

/// Of the last block.
void CandidateTable::NumberBranches()
{
    const CandidateBlock& block = blocks.back();
    numbers.push_back(block.branches);
    if (std::find(block.branches.begin(), block.branches.end(), 0) != block.branches.end()) {
        for (std::size_t local = 0; local < block.ends.size(); ++local) {
            NumberBranchesAt(block.firstPoint + local);
        }
    }
}

/// Gives the candidates of a point that have no branch the one that they continue, or a new one.
void CandidateTable::NumberBranchesAt(std::size_t point)
{
    constexpr int kNumbers = 127; // as many as are kept apart; then they begin again
    const Place at = PlaceOf(point);
    for (std::size_t i = at.begin; i < at.end; ++i) {
        if (blocks[at.block].branches[i] == 0) {
            const int parent = ParentAt(point, i - at.begin);
            numbers[at.block][i] = static_cast<std::int8_t>(
                parent >= 0 ? BranchAt(point - 1, static_cast<std::size_t>(parent))
                            : 1 + known++ % kNumbers);
        }
    }
}

CandidateFinder::CandidateFinder(Workplace& at, Following following)
    : place(at), follow(std::move(following))
{
    if (!follow) {
        follow = [this](const FollowTask& task) {
            std::vector<FollowedWay> followed;
            for (const JointValues& start : task.starts) {
                followed.push_back(FollowOn(start, task.from, task.begin, task.end));
            }
            return followed;
        };
    }
}

bool CandidateFinder::IsSettled(std::size_t point) const
{
    return !place.IsAtPole(place.PointAt(point).direction);
}

CandidateBlock CandidateFinder::FindBlock(std::size_t firstPoint, std::size_t endPoint,
                                          const KnownCandidates& before)
{
    CandidateBlock block;
    block.firstPoint = firstPoint;
    ways.clear();
    Candidates known; // at `from`, the last point that settles where all axes stand
    for (const JointValues& joints : before.joints) {
        known.emplace_back().joints = joints;
    }
    std::size_t from = known.empty() ? firstPoint : before.point;
    for (std::size_t point = firstPoint; point < endPoint; ++point) {
        if (IsSettled(point)) {
            Candidates found = FindAt(point, known, from, endPoint);
            for (Candidate& candidate : found) {
                block.joints.insert(block.joints.end(), candidate.joints.begin(),
                                    candidate.joints.end());
                block.branches.push_back(static_cast<std::int8_t>(candidate.branch));
                block.parents.push_back(
                    static_cast<std::int8_t>(from + 1 == point ? candidate.parent : -1));
            }
            known = std::move(found);
            from = point;
        }
        block.ends.push_back(static_cast<std::uint32_t>(block.branches.size()));
    }
    if (endPoint < place.NumPoints() && from + 1 == endPoint && !place.Pair() &&
        !place.IsRedundant()) {
        for (Candidate& candidate : known) {
            const bool leads = Follow(candidate.joints, from, endPoint);
            block.exits.push_back(leads ? candidate.joints : JointValues{});
        }
    }
    return block;
}

/// The angles of a pair give all the branches of a point at once; elsewhere they are continued from
/// the last point.
CandidateFinder::Candidates CandidateFinder::FindAt(std::size_t point, Candidates& known,
                                                    std::size_t from, std::size_t end)
{
    Candidates found;
    if (!place.Pair() || place.IsRedundant()) {
        found = Continue(known, from, point, end);
    }
    if (MayHoldMore(found, known, point)) {
        SeekAfresh(point, found);
    }
    return found;
}

CandidateFinder::Candidates CandidateFinder::Continue(Candidates& known, std::size_t from,
                                                      std::size_t point, std::size_t end)
{
    FollowAll(known, from, point, end);
    Candidates found;
    for (std::size_t i = 0; i < known.size(); ++i) {
        const FollowedWay& way = ways[known[i].way];
        const std::size_t step = known[i].step;
        if (step < way.size()) {
            Add({way[step], 0, static_cast<int>(i), known[i].way, step + 1}, found);
        }
    }
    return found;
}

/// Finds out where those lead of which it is not known: all the way to the end, for what one meets
/// does not depend on the others.
void CandidateFinder::FollowAll(Candidates& known, std::size_t from, std::size_t point,
                                std::size_t end)
{
    FollowTask task{from, point, end, {}};
    for (Candidate& candidate : known) {
        if (candidate.way == kNoWay) {
            candidate.way = ways.size() + task.starts.size();
            task.starts.push_back(candidate.joints);
        }
    }
    if (!task.starts.empty()) {
        std::vector<FollowedWay> followed = follow(task);
        std::move(followed.begin(), followed.end(), std::back_inserter(ways));
    }
}

FollowedWay CandidateFinder::FollowOn(JointValues joints, std::size_t from, std::size_t begin,
                                      std::size_t end)
{
    FollowedWay way;
    for (std::size_t point = begin; point < end; ++point) {
        if (IsSettled(point)) {
            if (!Follow(joints, from, point)) {
                break;
            }
            way.push_back(joints);
            joints = OnBaseTurns(std::move(joints));
            from = point;
        }
    }
    return way;
}

/// Continues one solution to a point, in steps where the way there is long: a long step may end on
/// another branch.
bool CandidateFinder::Follow(JointValues& joints, std::size_t from, std::size_t point)
{
    constexpr double kLongTurn = kPi / 4.0;
    constexpr int kSteps = 8;
    PointSolver& solver = place.SolverAt(point);
    JointValues next = joints;
    const bool isReached = solver.Solve(place.Targets().At(point), place.SolveLimits(), next);
    if (isReached && RotaryTravel(place.Axes(), joints, next) <= kLongTurn) {
        joints = std::move(next);
        return true;
    }
    if (place.Pair() || place.PointAt(point).isRapid || from + 1 != point) {
        joints = std::move(next); // the side of the pole tells the branches apart
        return isReached;
    }
    next = joints;
    for (int step = 1; step <= kSteps; ++step) {
        const double share = static_cast<double>(step) / kSteps;
        if (!solver.Solve(place.Targets().Towards(point, share), place.SolveLimits(), next)) {
            return false;
        }
    }
    joints = std::move(next);
    return true;
}

bool CandidateFinder::MayHoldMore(const Candidates& found, const Candidates& before,
                                  std::size_t point) const
{
    if (found.empty() || found.size() < before.size()) {
        return true;
    }
    constexpr std::size_t kBranches = 2;
    return place.Pair() && found.size() < kBranches &&
           place.Pair()->Directing(place.PointAt(point).direction).size() == kBranches;
}

void CandidateFinder::SeekAfresh(std::size_t point, Candidates& into)
{
    for (JointValues& joints : Seek(point)) {
        Add({std::move(joints), 0, -1, kNoWay, 0}, into);
    }
}

std::vector<JointValues> CandidateFinder::Seek(std::size_t point)
{
    if (place.Pair()) {
        return SeekByPair(point);
    }
    if (place.SolverAt(point).FreeRotaryAxes().size() <= kMostSampledByHybrid) {
        return SeekByHybridSolver(point);
    }
    SampleExtent extent;
    extent.isLimited = place.IsRedundant();
    return place.SamplerAt(point).FindAll(place.Targets().At(point), place.Start(), extent);
}

/// From the angles that give the direction, one solve for each branch finds the other axes. Where
/// that fails the hybrid solver has its try.
std::vector<JointValues> CandidateFinder::SeekByPair(std::size_t point)
{
    const RotaryPair& pair = *place.Pair();
    const std::vector<RotaryPair::Angles> angles = pair.Directing(place.PointAt(point).direction);
    PointSolver& solver = place.SolverAt(point);
    std::vector<JointValues> found;
    for (const RotaryPair::Angles& one : angles) {
        JointValues joints = solver.Initial();
        joints[pair.FirstAxis()] = one.first;
        joints[pair.SecondAxis()] = one.second;
        if (solver.Solve(place.Targets().At(point), place.SolveLimits(), joints)) {
            found.push_back(std::move(joints));
        }
    }
    return found.size() < angles.size() ? SeekByHybridSolver(point) : found;
}

std::vector<JointValues> CandidateFinder::SeekByHybridSolver(std::size_t point)
{
    PointSolver& solver = place.SolverAt(point);
    place.Machine().MoveToInitial(); // the starts spread out from where the joints stand
    return solver.SolveFromSamples(place.Targets().At(point), place.SolveLimits());
}

/// Adds a solution unless it is there already.
void CandidateFinder::Add(Candidate candidate, Candidates& into) const
{
    const std::vector<const Axis*>& axes = place.Axes();
    if (into.size() == kMostCandidates ||
        std::any_of(into.begin(), into.end(), [&](const Candidate& other) {
            return AreSameSolution(axes, other.joints, candidate.joints);
        })) {
        return;
    }
    candidate.joints = OnBaseTurns(std::move(candidate.joints));
    candidate.branch =
        place.Pair() ? place.Pair()->BranchOf(candidate.joints[place.Pair()->SecondAxis()]) : 0;
    into.push_back(std::move(candidate));
    if (place.Pair()) {
        std::sort(into.begin(), into.end(),
                  [](const Candidate& a, const Candidate& b) { return a.branch < b.branch; });
    }
}

JointValues CandidateFinder::OnBaseTurns(JointValues joints) const
{
    const std::vector<const Axis*>& axes = place.Axes();
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->isRotary && (!CountsTurns(*axes[i]) || !place.IsRedundant())) {
            joints[i] = BaseImage(*axes[i], joints[i]);
        }
    }
    return joints;
}

} // namespace host
