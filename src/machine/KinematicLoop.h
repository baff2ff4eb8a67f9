#ifndef TRUNNION_MACHINE_KINEMATIC_LOOP_H
#define TRUNNION_MACHINE_KINEMATIC_LOOP_H

#include "IkStream.h"
#include "geometry/Affine.h"
#include "model/ChainProduct.h"

namespace trunnion
{

/// A stream's loop of tool and part chain, made ready to be evaluated for many vectors of joint
/// values: the pose of IkStream::SolveFK to the last bit.
///
/// Look-ups and constant frames are settled once, products that a move leaves as they are are kept.
/// A loop with nodes of a host's own class, and one whose evaluation is traced, settles nothing:
/// each pose is then the stream's own forward kinematics, so that each node is asked each time.
class KinematicLoop
{
  public:
    KinematicLoop(IkStream& ofStream, bool withToolOnly);

    /// Reads the stream as it stands, for vectors with the joints of `states`. False where the
    /// nodes have to be asked.
    bool Settle(const IkJtStateVector& states);
    /// Nobody else sees the vectors that poses are evaluated for.
    bool IsSettled() const { return isSettled; }

    /// Readies PoseMoved for single moves away from `states`.
    void Prepare(IkJtStateVector& states);
    /// part_to_tool, or base_to_tool where the tool only is asked for.
    void Pose(IkJtStateVector& states, Affine& pose);
    /// The same of a settled loop; false where its elements are not all finite.
    bool TryPose(IkJtStateVector& states, Affine& pose);
    /// The pose where only the state at `index` has another value since the last Pose or Prepare.
    void PoseMoved(IkJtStateVector& states, int index, Affine& pose);
    /// The same as far as it differs from the last pose: that has the same rotation, and `offset`
    /// is its own. False where the joint turns, and where an element is not finite.
    bool TryOffsetSlid(int index, double value, double* offset) const;
    /// The last pose; its elements are finite where TryOffsetSlid says so.
    const Affine& LastPose() const { return lastPose; }

  private:
    bool TryPoseMoved(int index, double value, Affine& pose) const;
    bool IsPartMovedBy(int index) const;
    void Join(const double* fromPart, const double* toTool, Affine& pose) const;
    void AskNodes(IkJtStateVector& states, Affine& pose);

    IkStream& stream;
    bool toolOnly;
    bool isSettled{false};
    bool hasPart{false};     // the part side takes part
    bool isPartFixed{false}; // and stands still
    ChainProduct toolChain;
    ChainProduct partChain;
    // Of the last vector.
    const double* baseToTool{nullptr};
    const double* baseToPart{nullptr};
    Affine partToBase; // NOLINT(*-member-init)
    Affine lastPose;   // NOLINT(*-member-init)
    bool isFinite{false};
};

} // namespace trunnion

#endif
