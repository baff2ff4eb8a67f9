// A stream: one tool/part loop of the machine, with its forward and inverse kinematics.
//
// - A host that destroys a stream keeps a dangling part-space body at the end of its part chain
//   unless it first calls SetHasPartSpaceMatrix(false, ...): the destructor must not touch the
//   chain, which may be gone by then. A copy shares the chains, and with them the original's body.
// - What a solve may touch: the tree is the description, the stream is scratch. SolveIK reads
//   joints and locks, works on the stream's own fields and returns the answer; the joints change
//   only when the host commits it (IkJtStateVector::CommitValuesToJoints, or SolveFK with commit).
// - Frames: base_to_tool and base_to_part are the chains' transforms; the tool pose is
//   part_to_tool = inverse(base_to_part) * base_to_tool.
// - Units: [length] and [rad]; the objective counts degrees.
// - Ownership: chains stay the host's; they and their nodes live as long as the stream is used.
// - Threads: no two solves of any streams may overlap in time; the host serialises its calls.

#ifndef TRUNNION_IK_STREAM_H
#define TRUNNION_IK_STREAM_H

#include <map>
#include <vector>

#include <tnt/tnt_array1d.h>
#include <tnt/tnt_array2d.h>

#include "IkChain.h"
#include "IkEndState.h"
#include "IkExport.h"
#include "IkJtState.h"
#include "IkNode.h"

namespace trunnion
{
class KinematicLoop;
struct SolveFields;
} // namespace trunnion

/// One tool-side chain (added first) and one part-side chain (added second), both from the base
/// node.
class IK_API IkStream
{
  public:
    enum NodeChainType : int {
        PartChain = 0, //!< the part chain, base to tip
        ToolChain = 1, //!< the tool chain, base to tip
        PartToToolChain =
            2 //!< the part chain from its tip down, then the tool chain from its second
    };

    enum JointLockType : int {
        LocalLockOnly = 0,    //!< the stream's lock
        GlobalLockOnly = 1,   //!< the joint's own lock
        GlobalOrLocalLock = 2 //!< either
    };

    IkStream();
    IkStream(const IkStream& other);
    IkStream& operator=(const IkStream& other);
    virtual ~IkStream();
    /// Takes every field of `other`; chains by pointer.
    void Copy(const IkStream& other);

    bool operator==(const IkStream& other) const; //!< the same chains in the same order
    bool operator<(const IkStream& other) const;  //!< fewer chains

    void SetId(int id);
    int GetId() const;

    /// Appends the chain: the tool chain first, the part chain second. Registers its joints for
    /// local locks, all released. Chains beyond the second take no part in the kinematics.
    void AddChain(IkChain* chain);
    bool GetChain(int index, IkChain** out) const;
    int NumChains() const;
    /// Forgets the chains; locks, part space and working fields stay.
    void Reset();
    /// Fills `out` as NodeChainType says and returns its size.
    int GetSubNodeChain(IkChain& out, NodeChainType type) const;
    /// Inert: returns an empty chain.
    IkChain SetBoundNodes(int index);
    /// The joints of all chains, each once, at their current values.
    IkJtStateVector GetJointStates() const;
    IkNode* SearchByUserDataPtr(const void* data) const;

    // Part space: a frame at the tip of the part chain, given in machine coordinates for every part
    // joint at its initial value. It rides with the part-side joints, or, when fixed, stands still.
    void SetHasPartSpaceMatrix(bool has, bool fixed);
    void SetPartSpaceMatrix(const IkXformMat& frame, bool fixed);
    bool GetHasPartSpaceMatrix() const;
    void GetPartSpaceInfo(bool& has, bool& fixed) const;
    void GetPartSpaceMatrix(IkXformMat& out) const;

    // Local locks hold a joint in this stream's solves only.
    bool SetLocalLock(IkNode* joint,
                      bool locked); //!< false for a joint that no chain held when it was added
    bool GetLocalLock(IkNode* joint, bool& locked) const;
    void SetLocalLockAllRotary(bool locked);
    void ResetAllLocalLocks();
    /// False when the answer hangs on a local lock and the joint has none; `locked` is then false.
    bool GetJointLockStatus(IkJoint* joint, JointLockType type, bool& locked) const;

    /// part_to_tool for `states`, or base_to_tool when `toolOnly`, as the pose of the result.
    /// @param states   joint values; joints not in it keep their current values
    /// @param commit   writes the values into the joints first
    /// @param partOut  receives base_to_part when not null and there is a part chain
    /// @param toolOut  receives base_to_tool when not null
    /// @param toolOnly leaves the part side out. With a part chain and `partOut` the result is then
    ///                 the identity pose: take the tool from `toolOut`.
    /// Without chains or states the result is the default pose, and nothing is written.
    IkEndState SolveFK(IkJtStateVector& states, bool commit, IkXformMat* partOut,
                       IkXformMat* toolOut, bool toolOnly);
    /// The same at the joints' current values.
    IkEndState SolveFK(bool toolOnly);
    /// Where `partSpace`, a frame at the tip of the part chain, stands in machine coordinates for
    /// `states`. False unless there are exactly two chains and some states.
    bool SolveNewPartSpace(IkJtStateVector& states, IkXformMat& partSpace, IkXformMat& out);

    /// Finds joint values that put the tool at `target`, starting from the joints' current values.
    ///
    /// Passes of Newton's iteration with a least-squares step; converged when the squared position
    /// error [length^2] plus the squared angles [deg^2] of the selected axes is at most 1e-8.
    /// @param target     pose in part coordinates (machine coordinates when `toolOnly`), and which
    ///                   components of it count
    /// @param result     every joint with its value on success; on failure (false, after 61 passes)
    ///                   only the joints that ended outside their bounds
    /// @param limitType  whose ranges the steps respect
    /// @param lockRotary holds all rotary joints for this solve
    bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary);
    /// The same without `lockRotary`. Fewer states than the stream has joints mean failure.
    IkJtStateVector SolveIK(IkEndState& target, bool toolOnly, IkJoint::JointLimitTypes limitType);

    void TraceDump(const wchar_t* label = L"");
    void TraceDumpIkNodeInfo(const wchar_t* label = L"");
    void TraceDumpLocks();
    void SolverStatusTraceDump();

  private:
    friend class trunnion::KinematicLoop;

    bool EndsInPartSpace() const;
    void SetUpPartSpace(const IkXformMat& baseToPart);
    const IkNode* FixedPartTip() const;
    IkXformMat PoseByNodes(IkJtStateVector& states, IkXformMat* partOut, IkXformMat* toolOut,
                           bool toolOnly) const;

    trunnion::SolveFields Fields();
    void InitializeIkSolver(bool lockRotary);
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error);
    bool ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                             bool fkFlag);
    bool ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                int includeRotary, bool fkFlag);
    TNT::Array2D<double> CalcDThetaPsuedoInverse(const IkEndState& target,
                                                 const IkEndState& current,
                                                 TNT::Array2D<double>& jacobian);
    TNT::Array2D<double> CalcDThetaDLS(const IkEndState& target, const IkEndState& current,
                                       TNT::Array2D<double>& jacobian);
    TNT::Array2D<double> CalcDThetaPsuedoInversePartial(const IkEndState& target,
                                                        const IkEndState& current,
                                                        TNT::Array2D<double>& jacobian);
    TNT::Array2D<double> CalcDThetaSDLSPartial(const IkEndState& target, const IkEndState& current,
                                               TNT::Array2D<double>& jacobian);
    TNT::Array2D<double> CalcDThetaDLSPartial(const IkEndState& target, const IkEndState& current,
                                              TNT::Array2D<double>& jacobian);
    void SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u, TNT::Array2D<double>& v,
                     TNT::Array1D<double>& singularValues, int& rank);
    void JointClampSearch(TNT::Array2D<double>& step);

    int Id{0};
    std::vector<IkChain*> Chains; // not owned
    bool HasPartSpaceMatrix{false};
    IkBody PartSpaceBody;
    bool PartSpaceFixed{false};
    std::map<IkNode*, bool> LocalLocks;

    // Working fields of a solve, rebuilt at its start.
    IkJtStateVector SolverJtStates;
    std::vector<bool> LockedFlags;
    std::vector<bool> RotaryFlags;
    std::vector<int> RotaryJointIndices;
    std::vector<int> FreeJointIndices;
    double MaxAngleStep; // [rad]
};

#endif
