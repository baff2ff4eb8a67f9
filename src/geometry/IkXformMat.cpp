#include "IkXformMat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "geometry/Affine.h"
#include "geometry/Compose.h"
#include "geometry/Trace.h"

template class TNT::Matrix<double>;

namespace
{

constexpr int kSide = 4;
constexpr int kStored = kSide * kSide;

bool IsFourByFour(const TNT::Matrix<double>& m)
{
    return m.num_rows() == kSide && m.num_cols() == kSide;
}

void CopyLeadingBlock(const TNT::Matrix<double>& from, TNT::Matrix<double>& to)
{
    const int rows = std::min({kSide, from.num_rows(), to.num_rows()});
    const int cols = std::min({kSide, from.num_cols(), to.num_cols()});
    for (int i = 0; i < rows; ++i) {
        std::copy_n(from[i], cols, to[i]);
    }
}

/// Copies a fixed number of stored elements: an assignment never looks at shapes beyond staying
/// within both storages.
void CopyStored(const TNT::Matrix<double>& from, TNT::Matrix<double>& to)
{
    const int count = std::min({kStored, from.size(), to.size()});
    if (count > 0) {
        std::copy_n(from[0], count, to[0]);
    }
}

} // namespace

IkXformMat::IkXformMat()
{
    Allocate(kSide, kSide);
    for (int i = 0; i < kSide; ++i) {
        row_[i][i] = 1.0;
    }
}

IkXformMat::IkXformMat(const IkXformMat& other) // NOLINT(bugprone-copy-constructor-init)
    : TNT::Matrix<double>()
{
    Allocate(kSide, kSide);
    CopyLeadingBlock(other, *this);
}

IkXformMat::IkXformMat(const TNT::Matrix<double>& other) : TNT::Matrix<double>()
{
    Allocate(other.num_rows(), other.num_cols());
    if (other.size() > 0) {
        std::copy_n(other[0], other.size(), v_);
    }
}

/// Gives an empty matrix its storage, all 0. The base class could do that, but when the second or
/// third of its three blocks is not to be had it loses the first.
void IkXformMat::Allocate(int rows, int cols)
{
    const auto rowCount = static_cast<std::size_t>(rows);
    const auto colCount = static_cast<std::size_t>(cols);
    auto elements = std::make_unique<double[]>(rowCount * colCount);
    auto rowTable = std::make_unique<double*[]>(rowCount);
    auto rowTableFromOne = std::make_unique<double*[]>(rowCount);
    for (std::size_t i = 0; i < rowCount; ++i) {
        rowTable[i] = elements.get() + i * colCount;
        rowTableFromOne[i] = rowTable[i] - 1;
    }
    m_ = rows;
    n_ = cols;
    mn_ = rows * cols;
    v_ = elements.release();
    vm1_ = v_ - 1;
    row_ = rowTable.release();
    rowm1_ = rowTableFromOne.release() - 1;
}

IkXformMat::~IkXformMat() = default;

IkXformMat& IkXformMat::operator=(const IkXformMat& other)
{
    if (this != &other) {
        CopyStored(other, *this);
    }
    return *this;
}

IkXformMat& IkXformMat::operator=(const TNT::Matrix<double>& other)
{
    CopyStored(other, *this);
    return *this;
}

void IkXformMat::Eye()
{
    CopyLeadingBlock(IkXformMat(), *this);
}

IkXformMat IkXformMat::RotX(double a)
{
    IkXformMat m;
    m[1][1] = std::cos(a);
    m[1][2] = -std::sin(a);
    m[2][1] = std::sin(a);
    m[2][2] = std::cos(a);
    return m;
}

IkXformMat IkXformMat::RotY(double a)
{
    IkXformMat m;
    m[0][0] = std::cos(a);
    m[0][2] = std::sin(a);
    m[2][0] = -std::sin(a);
    m[2][2] = std::cos(a);
    return m;
}

IkXformMat IkXformMat::RotZ(double a)
{
    IkXformMat m;
    m[0][0] = std::cos(a);
    m[0][1] = -std::sin(a);
    m[1][0] = std::sin(a);
    m[1][1] = std::cos(a);
    return m;
}

IkXformMat IkXformMat::Translate(double x, double y, double z)
{
    IkXformMat m;
    m[0][3] = x;
    m[1][3] = y;
    m[2][3] = z;
    m[3][3] = 1.0;
    return m;
}

void IkXformMat::RotXThis(double a)
{
    *this = trunnion::Compose(*this, RotX(a));
}
void IkXformMat::RotYThis(double a)
{
    *this = trunnion::Compose(*this, RotY(a));
}
void IkXformMat::RotZThis(double a)
{
    *this = trunnion::Compose(*this, RotZ(a));
}

void IkXformMat::TranslateThis(double x, double y, double z)
{
    *this = trunnion::Compose(*this, Translate(x, y, z));
}

IkXformMat IkXformMat::QuickInvert() const
{
    const IkXformMat source(*this); // 4x4, whatever the shape of this one
    IkXformMat inverse;
    trunnion::InvertRigid(source[0], inverse[0]);
    return inverse;
}

void IkXformMat::QuickInvertThis()
{
    *this = QuickInvert();
}

bool IkXformMat::IsOrthogonal(double tol) const
{
    const IkXformMat source(*this);
    const double* r = source[0];
    const double* s = source[1];
    const double* t = source[2];
    const std::array<double, 3> d{r[1] * s[2] - r[2] * s[1], //
                                  r[2] * s[0] - r[0] * s[2], //
                                  r[0] * s[1] - r[1] * s[0]};
    const double p = std::fabs(d[0] * t[0] + d[1] * t[1] + d[2] * t[2]);
    const double q = std::fabs(r[0] * s[0] + r[1] * s[1] + r[2] * s[2]);
    return (1.0 - p) < tol && q < tol;
}

std::ostream& IkXformMat::operator<<(std::ostream& os) const
{
    os << num_rows() << " " << num_cols() << "\n";
    os.width(15);
    for (int i = 0; i < num_rows(); ++i) {
        for (int j = 0; j < num_cols(); ++j) {
            os << (*this)[i][j];
        }
        os << "\n";
    }
    return os;
}

void IkXformMat::TraceDump(const wchar_t* /*label*/) const
{
    trunnion::TraceRows(*this, L"%7.3g,\t");
}

void IkXformMat::TraceDumpMCode(const wchar_t* /*label*/) const
{
    trunnion::TraceRows(*this, L"%7.3g ");
}

namespace trunnion
{

IkXformMat Compose(const IkXformMat& a, const IkXformMat& b)
{
    if (!IsFourByFour(a) || !IsFourByFour(b)) {
        return Compose(IkXformMat(a), IkXformMat(b)); // the copies are 4x4
    }
    IkXformMat product;
    for (int i = 0; i < kSide; ++i) {
        for (int k = 0; k < kSide; ++k) {
            double sum = 0.0;
            for (int j = 0; j < kSide; ++j) {
                sum = sum + a[i][j] * b[j][k];
            }
            product[i][k] = sum;
        }
    }
    return product;
}

} // namespace trunnion
