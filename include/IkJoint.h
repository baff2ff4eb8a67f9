/// @file
/// Joints: tree nodes whose transform depends on one value.
///
/// - Units: a linear joint's value, bounds and initial value are lengths, a rotary joint's radians.
/// - Frames: the motion is applied on the right of the original frame, in the joint's own axes.
/// - Ranges: nothing here clamps a value; ranges are applied where steps are added (IkJtState.h).
/// - Ownership and threads: as for IkNode.

#ifndef TRUNNION_IK_JOINT_H
#define TRUNNION_IK_JOINT_H

#include <iostream>
#include <string>
#include <vector>

#include <tnt/tnt_vec.h>

#include "IkExport.h"
#include "IkNode.h"

extern template class IK_API TNT::Vector<double>;

/// What all joints have: value, range, lock, kind of motion, zero offset and direction. A plain
/// IkJoint moves nothing; IkJtPrism and IkJtRot do.
class IK_API IkJoint : public IkNode
{
  public:
    /// Kind of motion, in the axes of the original frame.
    enum JtPrimitives : int {
        JtPrimNone = 0,
        JtPrimTransX = 1,
        JtPrimTransY = 2,
        JtPrimTransZ = 3,
        JtPrimTransArbitrary = 4, //!< stored and reported; gives no motion
        JtPrimRotX = 5,
        JtPrimRotY = 6,
        JtPrimRotZ = 7,
        JtPrimRotArbitrary = 8 //!< stored and reported; gives no motion
    };

    /// Which joints' ranges a step respects: two bits, linear and rotary.
    enum JointLimitTypes : int {
        JtLimitNone = 0,
        JtLimitLinear = 1, //!< joints that are not rotary
        JtLimitRotary = 2,
        JtLimitAll = 3
    };

    ///@{
    /// Unlocked, at 0, range [-1, 1], without primitive, not reversed.
    IkJoint();
    IkJoint(const std::wstring& name);
    ///@}
    /// Copies node, lock, value and range; primitive, axis, direction and initial value start
    /// afresh.
    IkJoint(const IkJoint& other);
    /// Copies node and every joint member.
    IkJoint& operator=(const IkJoint& other);
    ~IkJoint() override;

    /// The transform for the value that `states` holds for this joint, else for the current value.
    IkXformMat GetXformMat(IkJtStateVector& states) override;
    /// The original frame, whatever the value: a joint of neither kind does not move.
    IkXformMat GetXformMat(double* value) override;
    bool IsJoint() const override; //!< true
    void TraceDump(const wchar_t* label) const override;

    double GetCurValue() const;     //!< [length] or [rad]
    void SetCurValue(double value); //!< stored as it is, whatever the range
    double GetLowBound() const;     //!< [length] or [rad]
    double GetHiBound() const;      //!< [length] or [rad]
    /// Stores the bounds as given; their order is not checked.
    void SetBounds(double low, double high);
    /// The value at which the joint's transform equals its original frame.
    double GetInitialValue() const;
    void SetInitialValue(double value); //!< does not mark the node dirty
    ///@{
    /// The joint's own lock: no solve of any stream moves it. See IkStream for locks of one stream.
    bool IsLocked() const;
    void SetIsLocked(bool isLocked);
    ///@}
    ///@{
    /// Any primitive is stored; one that is not of the joint's kind (a rotation on an IkJtPrism, a
    /// translation on an IkJtRot) makes its transform the identity.
    JtPrimitives GetJtPrimitive() const;
    void SetJtPrimitive(JtPrimitives newPrimitive);
    ///@}
    bool IsDirectionReversed() const;         //!< a positive value moves against the axis
    void SetDirectionReversed(bool reversed); //!< does not mark the node dirty
    /// The axis of the arbitrary primitives, as long as it was set: stored for the host, read by
    /// no transform.
    TNT::Vector<double> GetArbitraryAxis() const;
    void SetArbitraryAxis(const TNT::Vector<double>& axis); //!< does not mark the node dirty
    bool IsArbitraryAxisUsed() const;                       //!< of one of the arbitrary primitives
    /// Told by the primitive, JtPrimRotX to JtPrimRotArbitrary, not by the class. Safe to call
    /// first from several threads at once.
    bool IsRotary() const;

  protected:
    /// The signed displacement from the zero position for `*value`, or for the current value.
    double Displacement(const double* value) const;

  private:
    friend struct trunnion::DirectAccess;

    void Initialize();

    bool locked{false};
    double currentValue{0.0};
    double highBound{1.0};
    double lowBound{-1.0};
    JtPrimitives primitive{JtPrimNone};
    std::vector<double> arbitraryAxis;
    bool directionReversed{false};
    double initialValue{0.0};
};

/// A linear joint; by default along x, with the inverted range [1, -1].
class IK_API IkJtPrism : public IkJoint
{
  public:
    using IkJoint::GetXformMat;

    ///@{
    /// JtPrimTransX, bounds 1 and -1 in this order: set a range before solving with limits.
    IkJtPrism();
    IkJtPrism(const std::wstring& name);
    ///@}
    /// A new joint with the primitive of `other` and its bounds exchanged; nothing else is taken.
    IkJtPrism(const IkJtPrism& other);
    IkJtPrism& operator=(const IkJtPrism& other); //!< copies everything, bounds as they are
    ~IkJtPrism() override;

    /// original frame * translation; the identity for a primitive that is not JtPrimTransX, Y or Z.
    IkXformMat GetXformMat(double* value) override;

  private:
    void Initialize();
};

/// A rotary joint; by default about z, over a full turn either way.
class IK_API IkJtRot : public IkJoint
{
  public:
    using IkJoint::GetXformMat;

    ///@{
    /// JtPrimRotZ, bounds -6.28318530717958 and 6.28318530717958 [rad].
    IkJtRot();
    IkJtRot(const std::wstring& name);
    ///@}
    /// A new joint with the primitive of `other` and its bounds exchanged; nothing else is taken.
    IkJtRot(const IkJtRot& other);
    IkJtRot& operator=(const IkJtRot& other); //!< copies everything, bounds as they are
    ~IkJtRot() override;

    /// original frame * rotation; the identity for a primitive that is not JtPrimRotX, Y or Z.
    IkXformMat GetXformMat(double* value) override;

  private:
    void Initialize();
};

#endif
