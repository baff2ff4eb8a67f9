/// @file
/// Joint values: a state pairs a joint with a value, a state vector is an ordered set of states.
///
/// - Units: [length] for linear joints, [rad] for rotary ones.
/// - Indices: a state's index is the column of every Jacobian and the row of every step.
/// - Ownership: joint pointers are not owned and must outlive the use made of them.
/// - Threads: one at a time in the whole process. Steps given as a column go through process-wide
///   buffers, so no two solves may overlap.

#ifndef TRUNNION_IK_JT_STATE_H
#define TRUNNION_IK_JT_STATE_H

#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <tnt/tnt_array1d.h>
#include <tnt/tnt_array1d_utils.h>
#include <tnt/tnt_array2d.h>
#include <tnt/tnt_array2d_utils.h>

#include "IkExport.h"
#include "IkJoint.h"

extern template class IK_API TNT::Array1D<double>;

/// One joint and a value for it.
class IK_API IkJtState
{
  public:
    IkJtState(); //!< no joint, 0
    /// The joint at its current value.
    IkJtState(IkJoint* ofJoint);
    IkJtState(IkJoint* ofJoint, double withValue); //!< the value as given, whatever the range
    /// The node as a joint at its current value; no joint and 0 when it is not one.
    IkJtState(IkNode* node);
    ///@{
    /// A copy is of the same joint.
    IkJtState(const IkJtState& other);
    IkJtState& operator=(const IkJtState& other);
    ///@}
    virtual ~IkJtState();

    /// Compares the values exactly; the joints are not looked at.
    bool operator==(const IkJtState& other) const;
    /// Compares the values only.
    bool operator<(const IkJtState& other) const;

    IkJoint* GetJoint() const;      //!< null for a state without joint
    double GetValue() const;        //!< [length] or [rad]; not the joint's own value
    void SetValue(double newValue); //!< the joint is left alone

  private:
    friend struct trunnion::DirectAccess;

    double value{0.0};
    IkJoint* joint{nullptr};
};

/// An ordered collection of joint states with a look-up from joint to index.
class IK_API IkJtStateVector
{
  public:
    IkJtStateVector(); //!< empty
    ///@{
    /// A copy holds the same joints; what fails for want of memory changes nothing.
    IkJtStateVector(const IkJtStateVector& other);
    IkJtStateVector& operator=(const IkJtStateVector& other);
    ///@}
    virtual ~IkJtStateVector();

    /// A marker for a missing state, for callers that need one: -9999999.0.
    static double NoStateExist();

    /// Appends a copy; the look-up then leads to it, also when the joint was held already.
    void AddState(const IkJtState& state);
    /// Forgets the joint in the look-up, and removes the first state if it is this joint's. A later
    /// state of the joint stays, and the indices of the other joints are not renumbered.
    void DelState(IkJtState& state);
    void Reset(); //!< empties it

    int Size() const; //!< states
    /// The state at `index`; for an index outside the vector a scratch state without joint.
    IkJtState& GetState(int index);
    /// False, and `out` stays, for an index outside the vector.
    bool GetStateCopy(int index, IkJtState& out) const;

    int FindStateByJointPtr(const IkJoint* joint) const; //!< stored index, or -1
    /// False, and `out` stays, where the joint is not held.
    bool FindValFromPtr(const IkJoint* joint, double& out) const;
    /// Index of the last state whose joint has this user data, or -1.
    int FindStateByUserPtr(const void* data) const;

    ///@{
    /// The values, in the order of the states.
    TNT::Array1D<double> GetValArray1D() const;
    std::vector<double> GetValVector() const;
    ///@}
    /// False, and nothing changes, unless there is one value a state.
    bool SetValVector(std::vector<double> values);
    std::vector<std::wstring> GetNameVector() const; //!< of the joints; empty where there is none

    void GetLinearStateIndices(std::vector<int>& out) const; //!< states of IkJtPrism joints
    void GetRotaryStateIndices(std::vector<int>& out) const; //!< states of IkJtRot joints
    /// States strictly below their joint's low bound or strictly above its high bound.
    void GetOutOfBoundIndices(std::vector<int>& out) const;
    /// Always -1: the direction is not read and counts as the zero vector.
    int GetIndexofParallelLinJointState(double* const direction);

    /// 0 when both hold the same joints in the same order with values within the tolerances
    /// ([length] for linear joints, [rad] for rotary ones), else 1.
    int Compare(IkJtStateVector& other, double linearTol, double rotaryTol) const;
    /// Writes the values into the joints, in order; stops with false at a state without joint.
    bool CommitValuesToJoints();

    ///@{
    /// Adds or subtracts a delta a state, under the joints' ranges. A delta below the double
    /// epsilon in magnitude leaves its state alone. A value beyond its range is set to the bound; a
    /// rotary joint over a full turn ([0, 2pi] or [-2pi, 2pi] with 2pi as 6.28318530717958) is
    /// wrapped. The bool forms limit every joint or none, and wrap linear joints too. A count that
    /// is not the vector's size changes nothing. Arrays are one row or one column.
    void ChangeValues(int count, double* deltas, IkJoint::JointLimitTypes limitType, bool add);
    void ChangeValues(int count, double* deltas, bool applyLimits, bool add);
    void AppendValues(TNT::Array1D<double>& deltas, IkJoint::JointLimitTypes limitType);
    void AppendValues(TNT::Array1D<double>& deltas, bool applyLimits);
    void AppendValues(int count, double* deltas, IkJoint::JointLimitTypes limitType);
    void AppendValues(int count, double* deltas, bool applyLimits);
    void AppendValues(TNT::Array2D<double>& deltas, IkJoint::JointLimitTypes limitType);
    void AppendValues(TNT::Array2D<double>& deltas, bool applyLimits);
    void SubtractValues(TNT::Array1D<double>& deltas, IkJoint::JointLimitTypes limitType);
    void SubtractValues(TNT::Array1D<double>& deltas, bool applyLimits);
    void SubtractValues(int count, double* deltas, IkJoint::JointLimitTypes limitType);
    void SubtractValues(int count, double* deltas, bool applyLimits);
    void SubtractValues(TNT::Array2D<double>& deltas, IkJoint::JointLimitTypes limitType);
    void SubtractValues(TNT::Array2D<double>& deltas, bool applyLimits);
    ///@}

    ///@{
    /// Merging by joint: appends the states of `other` whose joints this vector does not hold.
    /// Values are never added, and a joint that both hold keeps the left value.
    IkJtStateVector operator+(const IkJtStateVector& other) const;
    /// Deletes (as DelState does) the states of `other` whose joints this vector does not hold.
    IkJtStateVector operator-(const IkJtStateVector& other) const;
    IkJtStateVector& operator+=(const IkJtStateVector& other);
    IkJtStateVector& operator-=(const IkJtStateVector& other); //!< deletes as operator- does
    ///@}

    void TraceDump(const wchar_t* label) const; //!< traces nothing

  private:
    friend struct trunnion::DirectAccess;

    using JointIndex = std::pair<const IkJoint*, int>;

    std::vector<JointIndex>::const_iterator FindIndex(const IkJoint* joint) const;

    std::vector<IkJtState> states;
    std::vector<JointIndex> jointIndex; // ascending by joint
};

#endif
