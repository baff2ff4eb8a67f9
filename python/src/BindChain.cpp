#include "Bindings.h"
#include "Chain.h"
#include "Serial.h"
#include "States.h"

#include <optional>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;
using ChainHandle = std::shared_ptr<Chain>;

std::shared_ptr<IkNode> NodeAt(const Chain& chain, int index)
{
    const int size = chain.Get().Size();
    const int place = index < 0 ? index + size : index;
    if (place < 0 || place >= size) {
        throw py::index_error("there is no node " + std::to_string(index) + " among " +
                              std::to_string(size));
    }
    return HandleOf(chain.Get().GetAt(place));
}

IkXformMat XformOf(const Chain& chain, const std::shared_ptr<States>& states)
{
    return states == nullptr ? chain.Get().GetXformMat() : chain.Get().GetXformMat(states->vector);
}

} // namespace

void BindChain(py::module_& module)
{
    py::class_<Chain, ChainHandle>(
        module, "IkChain",
        "An ordered list of nodes from the base towards a tip. The nodes live as long as the "
        "chain.",
        py::is_final())
        .def(py::init<>(), "An empty chain.")
        .def(
            "AddNode",
            [](Chain& chain, const std::shared_ptr<IkNode>& node) { chain.AddNode(node, false); },
            py::arg("node").none(false), Guard(), "Appends a node at the tip end.")
        .def(
            "AddNodeAtHead",
            [](Chain& chain, const std::shared_ptr<IkNode>& node) { chain.AddNode(node, true); },
            py::arg("node").none(false), Guard(), "Puts a node at the base end.")
        .def("FillFromBase2Node", &Chain::FillFromBase2Node, py::arg("node").none(false), Guard(),
             "Makes this the way from the root of the node's tree to the node, both included.")
        .def("RemoveTail", &Chain::RemoveTail, Guard(), "Takes the node at the tip end out.")
        .def("Reset", &Chain::Reset, Guard(), "Takes all nodes out.")
        .def("GetAt", &NodeAt, py::arg("index"), Guard(),
             "The node at an index; an IndexError where there is none.")
        .def("__getitem__", &NodeAt, py::arg("index"), Guard(),
             "The node at an index, from the end where that is negative.")
        .def(
            "Size", [](const Chain& chain) { return chain.Get().Size(); }, Guard(),
            "The number of nodes.")
        .def(
            "__len__", [](const Chain& chain) { return chain.Get().Size(); }, Guard(),
            "The number of nodes.")
        .def(
            "GetJointStates",
            [](const Chain& chain) { return StatesOf(chain.Get().GetJointStates()); }, Guard(),
            "The joints of the chain, in order, at their current values.")
        .def("GetXformMat", &XformOf, py::arg("states") = py::none(), Guard(),
             "base_to_tip for these values; joints that are not among them at their current ones.")
        .def(
            "__eq__",
            [](const Chain& chain, const py::object& other) {
                return py::isinstance<Chain>(other) &&
                       chain.Get() == other.cast<const Chain&>().Get();
            },
            py::arg("other"), Guard(), "Whether both list the same nodes in the same order.");
}

} // namespace bindings
