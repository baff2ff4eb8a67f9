#include "Arrays.h"
#include "Bindings.h"

#include <array>
#include <cstddef>
#include <stdexcept>
#include <vector>

#include <IkEndState.h>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Filter = std::array<bool, 4>;

Filter FilterOf(const IkEndState& state)
{
    Filter filter{};
    state.GetFilter(filter.data());
    return filter;
}

std::vector<double> VectorOf(const TNT::Array1D<double>& array)
{
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(array.dim()));
    for (int i = 0; i < array.dim(); ++i) {
        values.push_back(array[i]);
    }
    return values;
}

std::vector<double> Difference(const IkEndState& state, const IkEndState& other)
{
    if (FilterOf(state) != FilterOf(other)) { // where the library throws a pointer
        throw std::invalid_argument("the two have different filters; call CopyFilter first");
    }
    return VectorOf(state.Diff(other));
}

} // namespace

void BindEndState(py::module_& module)
{
    py::class_<IkEndState>(
        module, "IkEndState",
        "A pose with a filter of four flags that says what of it counts: x axis, y axis, z axis,\n"
        "position. At first z axis (the tool direction) and position do.")
        .def(py::init<>(), "The identity.")
        .def(py::init([](const IkXformMat& pose) {
                 IkEndState state;
                 state.SetCompleteState(pose);
                 return state;
             }),
             py::arg("pose"), "Of this pose.")
        .def(
            "GetCompleteState", [](const IkEndState& state) { return state.GetCompleteState(); },
            "A copy of the pose.")
        .def("SetCompleteState", &IkEndState::SetCompleteState, py::arg("pose"),
             "Sets the pose; the filter stays.")
        .def("GetFilter", &FilterOf, "The four flags.")
        .def(
            "SetFilter", [](IkEndState& state, Filter flags) { state.SetFilter(flags.data()); },
            py::arg("flags"), "Sets the four flags.")
        .def("CopyFilter", &IkEndState::CopyFilter, py::arg("other"), "Takes the other's filter.")
        .def("Reset", &IkEndState::Reset, "Makes the pose the identity; the filter stays.")
        .def("VectSize", &IkEndState::VectSize, "How many numbers count: 0, 3, 6, 9 or 12.")
        .def(
            "GetVector",
            [](const IkEndState& state) { return ArrayOf(VectorOf(state.GetVector())); },
            "The numbers that count, in the order position, x axis, y axis, z axis.")
        .def(
            "SetVector",
            [](IkEndState& state, std::vector<double> values) {
                if (values.size() != static_cast<std::size_t>(state.VectSize())) {
                    throw std::invalid_argument("give " + std::to_string(state.VectSize()) +
                                                " numbers, as many as the filter lets count");
                }
                state.SetVector(static_cast<int>(values.size()), values.data());
            },
            py::arg("values"), "Sets the numbers that count, the others to the identity's.")
        .def(
            "Diff",
            [](const IkEndState& state, const IkEndState& other) {
                return ArrayOf(Difference(state, other));
            },
            py::arg("other"), "This vector less the other's; a ValueError for other filters.");
}

} // namespace bindings
