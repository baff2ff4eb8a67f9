#ifndef TRUNNION_TESTS_PLAIN_PLAIN_STATES_H
#define TRUNNION_TESTS_PLAIN_PLAIN_STATES_H

#include <map>
#include <memory>
#include <vector>

#include "IkStream.h"
#include "plain/PlainMatrix.h"

// Joint values of the plain formulation. The library's own vector appears at the edges only: where
// a caller hands one over, and where a node class that the host defines has to be asked.
namespace plain
{

class States
{
  public:
    States() = default;
    States(const IkJtStateVector& handed); // NOLINT(google-explicit-constructor)

    /// Looking the joint up then leads to this state.
    void Add(IkJoint* joint, double value);

    int Size() const { return static_cast<int>(entries.size()); }
    IkJoint* Joint(int i) const { return entries[Index(i)].joint; }
    double Value(int i) const { return entries[Index(i)].value; }
    void SetValue(int i, double value) { entries[Index(i)].value = value; }
    /// The state that looking the joint up leads to, or -1. It may lie behind the end.
    int Place(const IkJoint* joint) const;

    IkJtStateVector ToLibrary() const;
    void TakeValues(IkJtStateVector& from);

  private:
    struct Entry
    {
        IkJoint* joint;
        double value; // [length] or [rad]
    };

    static std::size_t Index(int i) { return static_cast<std::size_t>(i); }

    std::vector<Entry> entries;
    std::map<const IkJoint*, int> places;
    // Kept where places were lost by deleting states: no adding brings such a vector about.
    std::shared_ptr<const IkJtStateVector> original;
};

bool IsRotary(const IkJoint& joint);

/// The joints of all chains, each once, at their current values.
States JointStates(const IkStream& stream);

/// Whose ranges a step respects, and which values beyond their range may come round again.
struct Limits
{
    bool ofLinear{false};
    bool ofRotary{false};
    bool wrapLinear{false};
};

/// The ranges of a pass of a solve, and those of a last pass.
Limits LimitsOf(IkJoint::JointLimitTypes limitType);
Limits LimitsOf(bool applied);

/// Adds a step, one row or one column with an entry a state; any other shape changes nothing.
void Append(States& states, const Array& step, const Limits& limits);

/// The states strictly outside their joint's bounds.
States OutOfBounds(const States& states);

/// Writes the values into the joints, in order, up to a state without joint.
void Commit(const States& states);

} // namespace plain

#endif
