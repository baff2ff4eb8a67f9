#ifndef TRUNNION_PYTHON_ARRAYS_H
#define TRUNNION_PYTHON_ARRAYS_H

#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include <IkXformMat.h>

#include <pybind11/numpy.h>

namespace bindings
{

using NumberArray =
    pybind11::array_t<double, pybind11::array::c_style | pybind11::array::forcecast>;

/// An array of Python's that owns `values`, without a copy.
template <class T>
pybind11::array_t<T> ArrayOf(std::vector<T> values, const std::vector<std::size_t>& shape)
{
    auto kept = std::make_unique<std::vector<T>>(std::move(values));
    const T* const first = kept->data();
    const pybind11::capsule owner(kept.get(), [](void* vector) {
        const std::unique_ptr<std::vector<T>> last(static_cast<std::vector<T>*>(vector));
    });
    static_cast<void>(kept.release());
    return pybind11::array_t<T>(shape, first, owner);
}

template <class T>
pybind11::array_t<T> ArrayOf(std::vector<T> values)
{
    const std::vector<std::size_t> shape{values.size()};
    return ArrayOf(std::move(values), shape);
}

/// What Python passes as a table of numbers: a copy, so that nobody changes it meanwhile.
struct Rows
{
    std::size_t count{0};
    std::size_t width{0};
    std::vector<double> values;

    const double* At(std::size_t row) const { return values.data() + row * width; }
};

/// Throws host::InputError unless the array has two dimensions and finite numbers.
Rows RowsOf(const char* name, const NumberArray& array);

NumberArray ArrayOf(const IkXformMat& frame);
/// Throws host::InputError unless the array is 4 by 4.
IkXformMat FrameFrom(const NumberArray& array);

} // namespace bindings

#endif
