#include "IkEndState.h"

#include <algorithm>
#include <cmath>

#include <tnt/tnt_array1d_utils.h>
#include <tnt/tnt_array2d_utils.h>

#include "geometry/Angles.h"
#include "model/EndVector.h"
#include "model/Indexing.h"

using trunnion::ToIndex;

namespace
{

constexpr int kVectorBuffer = 16;

} // namespace

IkEndState::IkEndState() = default;
IkEndState::IkEndState(const IkEndState& other) = default;
IkEndState& IkEndState::operator=(const IkEndState& other) = default;
IkEndState::~IkEndState() = default;

const IkXformMat& IkEndState::GetCompleteState() const
{
    return pose;
}
void IkEndState::SetCompleteState(const IkXformMat& newPose)
{
    pose = newPose;
}

void IkEndState::GetFilter(bool* const flags) const
{
    if (flags != nullptr) {
        std::copy(filter.begin(), filter.end(), flags);
    }
}

void IkEndState::SetFilter(bool* const flags)
{
    if (flags != nullptr) {
        std::copy_n(flags, filter.size(), filter.begin());
    }
}

void IkEndState::CopyFilter(const IkEndState& other)
{
    filter = other.filter;
}

void IkEndState::Reset()
{
    pose.Eye();
}

int IkEndState::VectSize() const
{
    return 3 * static_cast<int>(std::count(filter.begin(), filter.end(), true));
}

TNT::Array1D<double> IkEndState::GetVector() const
{
    trunnion::EndVector entries;
    trunnion::ToEndVector(*this, entries);
    TNT::Array1D<double> vector(entries.size);
    for (int i = 0; i < entries.size; ++i) {
        vector[i] = entries.e[i];
    }
    return vector;
}

TNT::Array2D<double> IkEndState::GetVector2D() const
{
    const TNT::Array1D<double> vector = GetVector();
    TNT::Array2D<double> column(vector.dim(), 1);
    for (int i = 0; i < vector.dim(); ++i) {
        column[i][0] = vector[i];
    }
    return column;
}

bool IkEndState::SetVector(int count, double* values)
{
    if (count != VectSize() || (count > 0 && values == nullptr)) {
        return false;
    }
    pose.Eye();
    for (const int column : trunnion::kComponentColumns) {
        if (filter.at(ToIndex(column))) {
            for (int row = 0; row < 3; ++row) {
                const double value = *values++;
                pose[row][column] = std::fabs(value) > trunnion::kTinyValue ? value : 0.0;
            }
        }
    }
    return true;
}

bool IkEndState::SetVector(TNT::Array1D<double>& values)
{
    std::array<double, kVectorBuffer> buffer{};
    if (values.dim() > kVectorBuffer) {
        return false;
    }
    for (int i = 0; i < values.dim(); ++i) {
        buffer.at(ToIndex(i)) = values[i];
    }
    return SetVector(values.dim(), buffer.data());
}

TNT::Array1D<double> IkEndState::Diff(const IkEndState& other) const
{
    if (filter != other.filter) {
        throw L"Filters of rhs and lhs must match."; // a raw pointer, as hosts catch it
    }
    return GetVector() - other.GetVector();
}

TNT::Array2D<double> IkEndState::Diff2D(const IkEndState& other) const
{
    // Kept on purpose: no filter check; columns of different length have an empty difference.
    return GetVector2D() - other.GetVector2D();
}

std::basic_ostream<char>& IkEndState::operator<<(std::basic_ostream<char>& os) const
{
    os.precision(15);
    const TNT::Array1D<double> vector = GetVector();
    for (int i = 0; i < vector.dim(); ++i) {
        os << vector[i] << ", ";
    }
    return os;
}

void IkEndState::TraceDump(const wchar_t* /*label*/) const
{
    GetVector();
}
