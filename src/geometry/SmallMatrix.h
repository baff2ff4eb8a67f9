#ifndef TRUNNION_GEOMETRY_SMALL_MATRIX_H
#define TRUNNION_GEOMETRY_SMALL_MATRIX_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace trunnion
{

/// A dense matrix, row by row, of any shape, which keeps up to `kOwn` elements in itself and takes
/// the heap for more. Scratch storage: a change of shape leaves the elements undefined.
template <int kOwn>
class SmallMatrix
{
  public:
    SmallMatrix() = default;
    SmallMatrix(const SmallMatrix&) = delete;
    SmallMatrix& operator=(const SmallMatrix&) = delete;
    SmallMatrix(SmallMatrix&&) = delete;
    SmallMatrix& operator=(SmallMatrix&&) = delete;
    ~SmallMatrix() = default;

    void Resize(int newRows, int newCols)
    {
        const auto size = static_cast<std::size_t>(newRows) * static_cast<std::size_t>(newCols);
        if (size > kOwn) {
            more.resize(size);
        }
        elements = size > kOwn ? more.data() : own;
        rows = newRows;
        cols = newCols;
    }

    void Fill(double value) { std::fill_n(elements, std::ptrdiff_t{rows} * cols, value); }

    void Assign(const SmallMatrix& other)
    {
        Resize(other.rows, other.cols);
        std::copy_n(other.elements, std::ptrdiff_t{rows} * cols, elements);
    }

    int Rows() const { return rows; }
    int Cols() const { return cols; }
    double* operator[](int row) { return elements + std::ptrdiff_t{row} * cols; }
    const double* operator[](int row) const { return elements + std::ptrdiff_t{row} * cols; }

  private:
    int rows{0};
    int cols{0};
    double* elements{own};
    double own[kOwn]; // NOLINT(*-member-init): scratch
    std::vector<double> more;
};

// Usual sizes: up to 16 joints, and 12 numbers of an end state.
using JointMatrix = SmallMatrix<16 * 16>;
/// One row of numbers, one a joint or one an end-state entry.
using JointRow = SmallMatrix<16>;

} // namespace trunnion

#endif
