#ifndef TRUNNION_TESTS_SUPPORT_BITS_H
#define TRUNNION_TESTS_SUPPORT_BITS_H

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "IkJtState.h"
#include "IkXformMat.h"

// Comparing results by their bits: 0.0 and -0.0 differ, a NaN equals itself.
namespace test
{

inline std::uint64_t BitsOf(double x)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

/// The same with one pattern for every NaN: which sign and payload an operation on two of them
/// gives hangs on the order in which a compiler hands it the operands.
inline std::uint64_t NumberBits(double x)
{
    return BitsOf(x != x ? std::numeric_limits<double>::quiet_NaN() : x);
}

inline std::vector<std::uint64_t> BitsOf(const TNT::Matrix<double>& m)
{
    std::vector<std::uint64_t> bits;
    for (int i = 0; i < m.num_rows(); ++i) {
        for (int j = 0; j < m.num_cols(); ++j) {
            bits.push_back(BitsOf(m[i][j]));
        }
    }
    return bits;
}

inline std::vector<std::uint64_t> BitsOf(const TNT::Array2D<double>& m)
{
    std::vector<std::uint64_t> bits;
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            bits.push_back(BitsOf(m[i][j]));
        }
    }
    return bits;
}

inline std::vector<std::uint64_t> BitsOf(const IkJtStateVector& states)
{
    std::vector<std::uint64_t> bits;
    for (const double value : states.GetValVector()) {
        bits.push_back(BitsOf(value));
    }
    return bits;
}

} // namespace test

#endif
