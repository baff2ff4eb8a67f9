/// @file
/// A stream: one tool/part loop of the machine, with its forward and inverse kinematics.
///
/// - A host that destroys a stream keeps a dangling part-space body at the end of its part chain
///   unless it first calls SetHasPartSpaceMatrix(false, ...): the destructor must not touch the
///   chain, which may be gone by then. A copy shares the chains, and with them the original's body.
/// - What a solve may touch: the tree is the description, the stream is scratch. SolveIK reads
///   joints and locks, works on the stream's own fields and returns the answer; the joints change
///   only when the host commits it (IkJtStateVector::CommitValuesToJoints, or SolveFK with commit).
/// - Frames: base_to_tool and base_to_part are the chains' transforms; the tool pose is
///   part_to_tool = inverse(base_to_part) * base_to_tool.
/// - Units: [length] and [rad]; the objective counts degrees.
/// - Ownership: chains stay the host's; they and their nodes live as long as the stream is used.
/// - Threads: no two solves of any streams may overlap in time; the host serialises its calls.

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
    /// What GetSubNodeChain collects.
    enum NodeChainType : int {
        PartChain = 0, //!< the part chain, base to tip
        ToolChain = 1, //!< the tool chain, base to tip
        PartToToolChain =
            2 //!< the part chain from its tip down, then the tool chain from its second
    };

    /// Which locks GetJointLockStatus asks. Solves count a joint as held by either.
    enum JointLockType : int {
        LocalLockOnly = 0,    //!< the stream's lock
        GlobalLockOnly = 1,   //!< the joint's own lock
        GlobalOrLocalLock = 2 //!< either
    };

    IkStream(); //!< id 0, no chains, no part space
    ///@{
    /// As Copy; what fails for want of memory changes nothing.
    IkStream(const IkStream& other);
    IkStream& operator=(const IkStream& other);
    ///@}
    virtual ~IkStream(); //!< touches neither chains nor nodes
    /// Takes every field of `other`; chains by pointer.
    void Copy(const IkStream& other);

    bool operator==(const IkStream& other) const; //!< the same chains in the same order
    bool operator<(const IkStream& other) const;  //!< fewer chains

    ///@{
    /// Any number. IkMachine finds the first stream with an id; nothing keeps ids apart.
    void SetId(int id);
    int GetId() const;
    ///@}

    /// Appends the chain: the tool chain first, the part chain second. Registers its joints for
    /// local locks, all released: a joint that enters a chain later has none. Chains beyond the
    /// second take no part in the kinematics. Null is ignored.
    void AddChain(IkChain* chain);
    /// 0 for the tool chain, 1 for the part chain. False, and `*out` stays, where there is none.
    bool GetChain(int index, IkChain** out) const;
    int NumChains() const; //!< as added
    /// Forgets the chains; locks, part space and working fields stay.
    void Reset();
    /// Fills `out` as NodeChainType says and returns its size.
    int GetSubNodeChain(IkChain& out, NodeChainType type) const;
    /// Inert: returns an empty chain.
    IkChain SetBoundNodes(int index);
    /// The joints of all chains, each once, at their current values.
    IkJtStateVector GetJointStates() const;
    /// The node with this user data, tool chain first and nearest the base, or null.
    IkNode* SearchByUserDataPtr(const void* data) const;

    ///@{
    /// Part space: a frame at the tip of the part chain, given in machine coordinates for every
    /// part joint at its initial value. It rides with the part-side joints, or, when fixed, stands
    /// still. It is a body of the stream's that is put at the end of the host's chain, so bodies
    /// added to the chain afterwards come behind it. Without a part chain the settings are stored
    /// and change nothing.
    void SetHasPartSpaceMatrix(bool has, bool fixed); //!< on with the last frame, or off
    /// Sets the frame and turns part space on.
    void SetPartSpaceMatrix(const IkXformMat& frame, bool fixed);
    bool GetHasPartSpaceMatrix() const;
    void GetPartSpaceInfo(bool& has, bool& fixed) const;
    void GetPartSpaceMatrix(IkXformMat& out) const; //!< as last set, on or off; else the identity
    ///@}

    ///@{
    /// Local locks hold a joint in this stream's solves only. False for a joint that no chain held
    /// when it was added; GetLocalLock then says not locked.
    bool SetLocalLock(IkNode* joint, bool locked);
    bool GetLocalLock(IkNode* joint, bool& locked) const;
    ///@}
    void SetLocalLockAllRotary(bool locked); //!< those that IkJoint::IsRotary; others keep theirs
    void ResetAllLocalLocks();               //!< releases all
    /// False when the answer hangs on a local lock and the joint has none; `locked` is then false.
    /// Of a null joint it is true, and `locked` stays.
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
    /// @param toolOnly   leaves the part side out
    /// @param result     every joint with its value on success; on failure (false, after 61 passes)
    ///                   only the joints that ended outside their bounds
    /// @param limitType  whose ranges the steps respect
    /// @param lockRotary holds all rotary joints for this solve
    bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary);
    /// The same without `lockRotary`. Fewer states than the stream has joints mean failure.
    IkJtStateVector SolveIK(IkEndState& target, bool toolOnly, IkJoint::JointLimitTypes limitType);

    ///@{
    /// Diagnostic dumps, which discard their lines; TraceDumpIkNodeInfo calls that of each node.
    void TraceDump(const wchar_t* label = L"");
    void TraceDumpIkNodeInfo(const wchar_t* label = L"");
    void TraceDumpLocks();
    void SolverStatusTraceDump();
    ///@}

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
