#include "Bindings.h"
#include "Machine.h"
#include "Serial.h"
#include "States.h"

#include <algorithm>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;

std::shared_ptr<Stream> StreamById(const Machine& machine, int id)
{
    const auto& streams = machine.Streams();
    const auto found =
        std::find_if(streams.begin(), streams.end(), [id](const std::shared_ptr<Stream>& stream) {
            return stream->Get().GetId() == id;
        });
    if (found == streams.end()) {
        throw py::key_error("there is no stream " + std::to_string(id));
    }
    return *found;
}

std::shared_ptr<Stream> StreamByIndex(const Machine& machine, int index)
{
    const auto& streams = machine.Streams();
    if (index < 0 || index >= static_cast<int>(streams.size())) {
        throw py::index_error("there is no stream " + std::to_string(index) + " among " +
                              std::to_string(streams.size()));
    }
    return streams[static_cast<std::size_t>(index)];
}

std::shared_ptr<States> JointStates(Machine& machine)
{
    IkJtStateVector states;
    machine.Get().GetJointStates(states);
    return StatesOf(states);
}

} // namespace

void BindMachine(py::module_& module)
{
    py::class_<Machine, std::shared_ptr<Machine>>(
        module, "IkMachine",
        "The root object of a host's model: a base node with its tree, and the streams over it.\n"
        "What Python refers to outlives the machine.",
        py::is_final())
        .def(py::init<>(), "An empty machine.")
        .def("SetBaseNode", &Machine::SetBaseNode, py::arg("node"), Guard(),
             "Takes the tree below a node for the machine's, or with None none.")
        .def(
            "GetBaseNode", [](Machine& machine) { return HandleOf(machine.Get().GetBaseNode()); },
            Guard(), "That node, or None.")
        .def("AddStream", &Machine::AddStream, py::arg("stream").none(false), Guard(),
             "Appends a stream; a ValueError for one that it has.")
        .def("RemoveStream", &Machine::RemoveStream, py::arg("id"), Guard(),
             "Takes out the first stream of this id, if any.")
        .def(
            "GetNumStreams", [](const Machine& machine) { return machine.Streams().size(); },
            Guard(), "The number of streams.")
        .def("GetStreamById", &StreamById, py::arg("id"), Guard(),
             "The first stream of this id; a KeyError where there is none.")
        .def("GetStreamByIndex", &StreamByIndex, py::arg("index"), Guard(),
             "The stream at an index; an IndexError where there is none.")
        .def("GetJointStates", &JointStates, Guard(),
             "All joints below the base node at their current values, each after those below it.")
        .def(
            "RecurseInitJointValues",
            [](Machine& machine, const std::shared_ptr<IkNode>& node) {
                machine.Get().RecurseInitJointValues(node.get());
            },
            py::arg("node") = py::none(), Guard(),
            "Puts a node, if it is a joint, and every joint below it at its initial value; "
            "without\n"
            "a node, every joint below the base node.")
        .def("Reset", &Machine::Reset, Guard(), "Lets go of the tree and of all streams.");
}

} // namespace bindings
