#include "Arrays.h"
#include "Bindings.h"
#include "Serial.h"
#include "States.h"

#include <optional>
#include <stdexcept>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;
using StatesHandle = std::shared_ptr<States>;

std::shared_ptr<IkJoint> JointOf(const IkJtState& state)
{
    return std::static_pointer_cast<IkJoint>(HandleOf(state.GetJoint()));
}

void RefuseCount(std::size_t count, const States& states)
{
    if (count != static_cast<std::size_t>(states.vector.Size())) {
        throw std::invalid_argument("give one number for each of the " +
                                    std::to_string(states.vector.Size()) + " states");
    }
}

void Change(States& states, std::vector<double> deltas, IkJoint::JointLimitTypes limits, bool adds)
{
    RefuseCount(deltas.size(), states);
    states.vector.ChangeValues(static_cast<int>(deltas.size()), deltas.data(), limits, adds);
}

std::optional<double> ValueOf(const States& states, const IkJoint& joint)
{
    double value = 0.0;
    return states.vector.FindValFromPtr(&joint, value) ? std::optional(value) : std::nullopt;
}

template <class Collect>
std::vector<int> Indices(const Collect& collect)
{
    std::vector<int> indices;
    collect(indices);
    return indices;
}

StateInVector StateAt(const StatesHandle& states, int index)
{
    const int size = states->vector.Size();
    const int place = index < 0 ? index + size : index;
    if (place < 0 || place >= size) {
        throw py::index_error("there is no state " + std::to_string(index) + " among " +
                              std::to_string(size));
    }
    return {states, place};
}

py::list ListOf(const StatesHandle& states)
{
    py::list all;
    for (int i = 0; i < states->vector.Size(); ++i) {
        all.append(StateInVector(states, i));
    }
    return all;
}

std::wstring StatesText(States& states)
{
    std::wstring text = L"IkJtStateVector(";
    for (int i = 0; i < states.vector.Size(); ++i) {
        const IkJtState& state = states.vector.GetState(i);
        text += (i == 0 ? L"" : L", ") + state.GetJoint()->GetName() + L"=" +
                py::cast<std::wstring>(py::repr(py::float_(state.GetValue())));
    }
    return text + L")";
}

void BindState(py::module_& module)
{
    py::class_<StateInVector>(module, "IkJtState",
                              "A joint and a value for it, in its place in a state vector: a value "
                              "that is set here is set there.",
                              py::is_final())
        .def(py::init([](const std::shared_ptr<IkJoint>& joint, std::optional<double> value) {
                 auto states = std::make_shared<States>();
                 states->Add(joint, value.value_or(joint->GetCurValue()));
                 return StateInVector(states, 0);
             }),
             py::arg("joint").none(false), py::arg("value") = py::none(), Guard(),
             "A state by itself; without a value, at the joint's current one.")
        .def(
            "GetJoint", [](const StateInVector& state) { return JointOf(state.Get()); }, Guard(),
            "The joint.")
        .def(
            "GetValue", [](const StateInVector& state) { return state.Get().GetValue(); }, Guard(),
            "The value [length] or [rad].")
        .def(
            "SetValue",
            [](const StateInVector& state, double value) { state.Get().SetValue(value); },
            py::arg("value"), Guard(), "Sets the value; the joint does not move.")
        .def(
            "__repr__",
            [](const StateInVector& state) {
                return L"<IkJtState " + JointOf(state.Get())->GetName() + L">";
            },
            Guard(), "The joint's name.");
}

void BindValues(py::class_<States, StatesHandle>& states)
{
    states
        .def(
            "GetValVector", [](const States& all) { return ArrayOf(all.vector.GetValVector()); },
            Guard(), "The values, a new array.")
        .def(
            "SetValVector",
            [](States& all, const std::vector<double>& values) {
                RefuseCount(values.size(), all);
                all.vector.SetValVector(values);
            },
            py::arg("values"), Guard(), "Sets all values; the joints do not move.")
        .def(
            "GetNameVector", [](const States& all) { return all.vector.GetNameVector(); }, Guard(),
            "The joints' names.")
        .def("FindValFromPtr", &ValueOf, py::arg("joint").none(false), Guard(),
             "The value held for a joint, or None.")
        .def(
            "FindStateByJointPtr",
            [](const States& all, const IkJoint& joint) {
                return all.vector.FindStateByJointPtr(&joint);
            },
            py::arg("joint").none(false), Guard(), "The index of a joint's state, or -1.")
        .def(
            "GetLinearStateIndices",
            [](const States& all) {
                return Indices([&](auto& out) { all.vector.GetLinearStateIndices(out); });
            },
            Guard(), "The indices of the linear joints' states.")
        .def(
            "GetRotaryStateIndices",
            [](const States& all) {
                return Indices([&](auto& out) { all.vector.GetRotaryStateIndices(out); });
            },
            Guard(), "The indices of the rotary joints' states.")
        .def(
            "GetOutOfBoundIndices",
            [](const States& all) {
                return Indices([&](auto& out) { all.vector.GetOutOfBoundIndices(out); });
            },
            Guard(), "The indices of the states beyond their joint's bounds.")
        .def(
            "AppendValues",
            [](States& all, std::vector<double> deltas, IkJoint::JointLimitTypes limits) {
                Change(all, std::move(deltas), limits, true);
            },
            py::arg("deltas"), py::arg("limit_type"), Guard(),
            "Adds a number to each value, under the joints' ranges as `limit_type` says.")
        .def(
            "SubtractValues",
            [](States& all, std::vector<double> deltas, IkJoint::JointLimitTypes limits) {
                Change(all, std::move(deltas), limits, false);
            },
            py::arg("deltas"), py::arg("limit_type"), Guard(),
            "Takes a number from each value, under the joints' ranges as `limit_type` says.");
}

} // namespace

void BindStates(py::module_& module)
{
    BindState(module);
    py::class_<States, StatesHandle> states(
        module, "IkJtStateVector",
        "Joints with a value for each [length] or [rad], in an order. The joints live as long as "
        "the vector.",
        py::is_final());
    states.def(py::init<>(), "An empty vector.")
        .def(
            "AddState",
            [](States& all, const StateInVector& state) {
                all.Add(JointOf(state.Get()), state.Get().GetValue());
            },
            py::arg("state").none(false), Guard(), "Appends a copy of a state.")
        .def(
            "Reset",
            [](States& all) {
                all.vector.Reset();
                all.kept.clear();
            },
            Guard(), "Takes all states out.")
        .def(
            "Size", [](const States& all) { return all.vector.Size(); }, Guard(),
            "The number of states.")
        .def(
            "__len__", [](const States& all) { return all.vector.Size(); }, Guard(),
            "The number of states.")
        .def("GetState", &StateAt, py::arg("index"), Guard(),
             "The state at an index; an IndexError where there is none.")
        .def("__getitem__", &StateAt, py::arg("index"), Guard(),
             "The state at an index, from the end where that is negative.")
        .def(
            "__iter__", [](const StatesHandle& all) { return py::iter(ListOf(all)); }, Guard(),
            "The states in order.")
        .def(
            "Compare",
            [](States& all, States& other, double linearTol, double rotaryTol) {
                return all.vector.Compare(other.vector, linearTol, rotaryTol);
            },
            py::arg("other").none(false), py::arg("linear_tol"), py::arg("rotary_tol"), Guard(),
            "0 for the same joints with values within the tolerances [length] and [rad], else 1.")
        .def(
            "CommitValuesToJoints", [](States& all) { return all.vector.CommitValuesToJoints(); },
            Guard(), "Moves the joints to the values.")
        .def(
            "__add__",
            [](const States& a, const States& b) { return StatesOf(a.vector + b.vector); },
            py::is_operator(), Guard(),
            "The states of both; of a joint that both hold the left one's.")
        .def("__repr__", &StatesText, Guard(), "The joints' names with their values.");
    BindValues(states);
}

} // namespace bindings
