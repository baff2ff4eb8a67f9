/// @file
/// Homogeneous transforms: every frame, joint motion, chain product and pose is one of these.
///
/// - Convention: column vectors. [R t; 0 0 0 1] maps a point p to R p + t, and base_to_tool is the
///   pose of the tool frame in the base frame, so base_to_tool * tool_to_tip = base_to_tip: inner
///   names meet.
/// - Units: angles in radians, lengths in whatever unit the host measures in.
/// - Threads: a plain value type; distinct objects may be used from distinct threads.

#ifndef TRUNNION_IK_XFORM_MAT_H
#define TRUNNION_IK_XFORM_MAT_H

#include <iostream>

// The matrix keeps its one-based row table a place off and deletes it from there after moving back,
// which g++ takes for a wrong delete wherever it inlines the destructor: in a host as well.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wfree-nonheap-object"
#include <tnt/tnt_cmat.h>
#pragma GCC diagnostic pop

#include "IkExport.h"

extern template class IK_API TNT::Matrix<double>;

/// A 4x4 homogeneous transform on top of the TNT dense matrix, whose element access (`m[i][j]` from
/// zero, `m(i, j)` from one), sizes and product (`a * b`) serve it unchanged.
///
/// Copies and assignments move sixteen elements and never resize the target. A matrix of another
/// shape arises only from the `TNT::Matrix` constructor; every operation stays within its storage.
/// There copies, `Eye`, the inverse and the test of orthogonality read what is missing as 0 and
/// write what is there; assignments, and with them the operations on this transform, copy as many
/// leading stored elements as both sides have.
class IK_API IkXformMat : public TNT::Matrix<double>
{
  public:
    /// The 4x4 identity.
    IkXformMat();
    /// Always 4x4: the elements of rows and columns 0 to 3 of `other`.
    IkXformMat(const IkXformMat& other);
    /// Takes the shape of `other`, whatever it is, and all its elements.
    IkXformMat(const TNT::Matrix<double>& other);
    virtual ~IkXformMat();

    ///@{
    /// Copies the first sixteen stored elements (row-major); never resizes.
    IkXformMat& operator=(const IkXformMat& other);
    IkXformMat& operator=(const TNT::Matrix<double>& other);
    ///@}

    /// Makes this the identity.
    void Eye();

    static IkXformMat RotX(double a);                          //!< rotation about x by `a` [rad]
    static IkXformMat RotY(double a);                          //!< rotation about y by `a` [rad]
    static IkXformMat RotZ(double a);                          //!< rotation about z by `a` [rad]
    static IkXformMat Translate(double x, double y, double z); //!< offset [length]

    ///@{
    /// Post-multiplication: the motion is taken about and along the axes of this frame.
    void RotXThis(double a);                          //!< this = this * RotX(a) [rad]
    void RotYThis(double a);                          //!< this = this * RotY(a) [rad]
    void RotZThis(double a);                          //!< this = this * RotZ(a) [rad]
    void TranslateThis(double x, double y, double z); //!< this = this * Translate(x, y, z)
    ///@}

    /// The inverse of a rigid transform, [R' -R't; 0 0 0 1]. Of a transform that is not rigid the
    /// result is simply not the inverse; the bottom row of this transform is not looked at.
    IkXformMat QuickInvert() const;
    void QuickInvertThis(); //!< this = QuickInvert()

    /// True when the rows r, s, t of the rotation block satisfy 1 - |(r x s) . t| < tol and
    /// |r . s| < tol. A mirror passes, and so does a rotation scaled up: the triple product is
    /// bounded on one side only, and rows 0 and 1 alone are tested against each other.
    bool IsOrthogonal(double tol) const;

    /// Writes "rows columns", then a line a row without separators; a field width of 15 is set
    /// once, so it pads the first element only. The transform is the left operand: `m << stream`.
    std::ostream& operator<<(std::ostream& os) const;

    /// One trace line a row, elements as "%7.3g,\t". The label is not printed.
    void TraceDump(const wchar_t* label) const;
    /// One trace line a row, elements as "%7.3g ", ready for a matrix calculator.
    void TraceDumpMCode(const wchar_t* label) const;

  private:
    void Allocate(int rows, int cols);
};

#endif
