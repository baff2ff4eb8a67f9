#ifndef TRUNNION_TESTS_SUPPORT_UNUSUAL_MACHINE_H
#define TRUNNION_TESTS_SUPPORT_UNUSUAL_MACHINE_H

#include <memory>
#include <vector>

#include "IkStream.h"
#include "support/HostNodes.h"
#include "support/Random.h"

namespace test
{

/// Whatever a host may put together: a tree of bodies and joints, some of the host's own classes,
/// over frames rigid and not; up to three chains through it, which share nodes, hold some twice or
/// none at all; part spaces, locks and bounds of every kind; and now and then a number at the end
/// of the range of doubles, an infinity or a NaN.
struct UnusualMachine
{
    std::vector<std::unique_ptr<IkNode>> nodes; // parents first
    std::vector<IkJoint*> joints;               // those among the nodes
    std::vector<HostNode*> hosts;               // likewise
    std::unique_ptr<CallLog> log;
    std::vector<std::unique_ptr<IkChain>> chains;
    std::unique_ptr<IkStream> stream;

    /// Clears the log and makes the host's nodes forget what they have been asked.
    void Restart() const;
    bool ChangesStates() const; //!< one of the host's nodes does
    std::vector<double> JointValues() const;
    void SetJointValues(const std::vector<double>& values) const;
};

UnusualMachine MakeUnusualMachine(Random& random);
/// With nodes that change what other nodes are like whenever they are asked.
UnusualMachine MakeMeddlingMachine(Random& random);

/// Up to `most` states of some of the machine's joints and of others, some twice, some without
/// joint; now and then one has been deleted.
IkJtStateVector UnusualStates(const UnusualMachine& machine, Random& random);

/// A pose near the machine's own, or any, with one of the 16 filters.
IkEndState UnusualTarget(const UnusualMachine& machine, Random& random);

IkXformMat UnusualFrame(Random& random);

/// Mostly `ordinary`.
double UnusualNumber(double ordinary, Random& random);

} // namespace test

#endif
