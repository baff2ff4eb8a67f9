/// @file
/// End states: a pose of a chain's end and a filter that says which parts of it matter.
///
/// - Layout: the end-state vector holds three numbers an enabled component, in the fixed order
///   position, X axis, Y axis, Z axis; disabled ones are skipped. Every error and every Jacobian
///   row follows it.
/// - Units: position in the host's length unit, axes as raw direction vectors, not angles.
/// - Threads: a plain value type; distinct objects may be used from distinct threads.

#ifndef TRUNNION_IK_END_STATE_H
#define TRUNNION_IK_END_STATE_H

#include <array>
#include <iostream>

#include <tnt/tnt_array1d.h>
#include <tnt/tnt_array2d.h>

#include "IkExport.h"
#include "IkJtState.h"
#include "IkXformMat.h"

/// A pose with a filter of four flags, indexed by pose column: X axis, Y axis, Z axis, position.
/// By default position and Z axis (the tool direction) count: six numbers.
class IK_API IkEndState
{
  public:
    IkEndState(); //!< the identity, with the default filter
    ///@{
    /// Copies pose and filter.
    IkEndState(const IkEndState& other);
    IkEndState& operator=(const IkEndState& other);
    ///@}
    virtual ~IkEndState();

    const IkXformMat& GetCompleteState() const;       //!< the whole pose, whatever the filter
    void SetCompleteState(const IkXformMat& newPose); //!< the filter stays
    void GetFilter(bool* const flags) const;          //!< writes 4 flags; null is ignored
    void SetFilter(bool* const flags);                //!< reads 4 flags; null is ignored
    void CopyFilter(const IkEndState& other);         //!< the pose stays
    /// Makes the pose the identity; the filter stays.
    void Reset();

    int VectSize() const; //!< 0, 3, 6, 9 or 12
    ///@{
    /// The components that count, in the order at the head of this file, VectSize() entries.
    TNT::Array1D<double> GetVector() const;
    TNT::Array2D<double> GetVector2D() const; //!< as one column
    ///@}
    ///@{
    /// Sets the enabled components, the others to the identity's; magnitudes up to the double
    /// epsilon become 0. False, and nothing changes, unless there are VectSize() values.
    bool SetVector(int count, double* values);
    bool SetVector(TNT::Array1D<double>& values);
    ///@}

    /// This vector minus the other's. Throws the wide string pointer
    /// L"Filters of rhs and lhs must match." when the filters differ.
    TNT::Array1D<double> Diff(const IkEndState& other) const;
    /// The same as one column; without the filter check, so that filters of different size give an
    /// empty array.
    TNT::Array2D<double> Diff2D(const IkEndState& other) const;

    /// Writes the vector, each entry followed by ", ", at precision 15. The end state is the left
    /// operand: `state << stream`.
    std::basic_ostream<char>& operator<<(std::basic_ostream<char>& os) const;

    void TraceDump(const wchar_t* label) const; //!< traces nothing

  private:
    friend struct trunnion::DirectAccess;

    std::array<bool, 4> filter{false, false, true, true};
    IkXformMat pose;
};

#endif
