#include "Bindings.h"
#include "Serial.h"
#include "States.h"
#include "Stream.h"
#include "Unlocked.h"

#include <optional>
#include <utility>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;
using StreamHandle = std::shared_ptr<Stream>;

std::shared_ptr<Chain> ChainAt(const Stream& stream, int index)
{
    const auto& chains = stream.Chains();
    if (index < 0 || index >= static_cast<int>(chains.size())) {
        throw py::index_error("there is no chain " + std::to_string(index) + " among " +
                              std::to_string(chains.size()));
    }
    return chains[static_cast<std::size_t>(index)];
}

std::vector<std::shared_ptr<IkNode>> SubNodes(Stream& stream, IkStream::NodeChainType type)
{
    IkChain chain;
    stream.Get().GetSubNodeChain(chain, type);
    std::vector<std::shared_ptr<IkNode>> nodes;
    nodes.reserve(static_cast<std::size_t>(chain.Size()));
    for (int i = 0; i < chain.Size(); ++i) {
        nodes.push_back(HandleOf(chain.GetAt(i)));
    }
    return nodes;
}

std::optional<bool> LocalLock(Stream& stream, IkNode& joint)
{
    bool locked = false;
    return stream.Get().GetLocalLock(&joint, locked) ? std::optional(locked) : std::nullopt;
}

std::optional<bool> LockStatus(Stream& stream, IkJoint& joint, IkStream::JointLockType type)
{
    bool locked = false;
    return stream.Get().GetJointLockStatus(&joint, type, locked) ? std::optional(locked)
                                                                 : std::nullopt;
}

std::pair<bool, bool> PartSpaceInfo(Stream& stream)
{
    std::pair<bool, bool> info;
    stream.Get().GetPartSpaceInfo(info.first, info.second);
    return info;
}

IkXformMat PartSpace(Stream& stream)
{
    IkXformMat frame;
    stream.Get().GetPartSpaceMatrix(frame);
    return frame;
}

IkEndState Forward(Stream& stream, const std::shared_ptr<States>& states, bool commit,
                   bool toolOnly)
{
    if (states == nullptr) {
        return stream.Get().SolveFK(toolOnly);
    }
    return stream.Get().SolveFK(states->vector, commit, nullptr, nullptr, toolOnly);
}

std::pair<bool, std::shared_ptr<States>> Inverse(Stream& stream, IkEndState target, bool toolOnly,
                                                 IkJoint::JointLimitTypes limits, bool lockRotary)
{
    IkJtStateVector answer;
    bool hasConverged = false;
    {
        const Unlocked others;
        hasConverged = stream.Get().SolveIK(target, answer, toolOnly, limits, lockRotary);
    }
    return {hasConverged, StatesOf(answer)};
}

void BindLocks(py::class_<Stream, StreamHandle>& stream)
{
    stream
        .def(
            "SetLocalLock",
            [](Stream& one, IkNode& joint, bool locked) {
                return one.Get().SetLocalLock(&joint, locked);
            },
            py::arg("joint").none(false), py::arg("locked"), Guard(),
            "Holds a joint in this stream's solves, or not; False for one that no chain held.")
        .def("GetLocalLock", &LocalLock, py::arg("joint").none(false), Guard(),
             "Whether this stream holds a joint; None for one that no chain held.")
        .def(
            "SetLocalLockAllRotary",
            [](Stream& one, bool locked) { one.Get().SetLocalLockAllRotary(locked); },
            py::arg("locked"), Guard(), "Holds all rotary joints in this stream's solves, or none.")
        .def(
            "ResetAllLocalLocks", [](Stream& one) { one.Get().ResetAllLocalLocks(); }, Guard(),
            "Holds no joint any more.")
        .def("GetJointLockStatus", &LockStatus, py::arg("joint").none(false), py::arg("type"),
             Guard(),
             "Whether a lock of this type holds the joint; None where that hangs on a local lock\n"
             "and the joint has none.");
}

void BindPartSpace(py::class_<Stream, StreamHandle>& stream)
{
    stream
        .def("SetHasPartSpaceMatrix", &Stream::SetHasPartSpaceMatrix, py::arg("has"),
             py::arg("fixed"), Guard(),
             "Puts the part space at the end of the part chain, or away.")
        .def("SetPartSpaceMatrix", &Stream::SetPartSpaceMatrix, py::arg("frame"), py::arg("fixed"),
             Guard(),
             "Puts the part space there, in machine coordinates with every part joint at its\n"
             "initial value. It rides with these joints or, when fixed, stands still.")
        .def(
            "GetHasPartSpaceMatrix", [](Stream& one) { return one.Get().GetHasPartSpaceMatrix(); },
            Guard(), "Whether there is a part space.")
        .def("GetPartSpaceInfo", &PartSpaceInfo, Guard(),
             "Whether there is a part space, and whether it is fixed.")
        .def("GetPartSpaceMatrix", &PartSpace, Guard(), "The part space, as it was set.");
}

} // namespace

void BindStream(py::module_& module)
{
    py::class_<Stream, StreamHandle> stream(
        module, "IkStream",
        "A tool-side chain, added first, and a part-side chain, added second, both from the base.\n"
        "\n"
        "A solve reads the joints and never moves them: commit the answer to do so. The chains\n"
        "live as long as the stream.",
        py::is_final());
    py::enum_<IkStream::NodeChainType>(stream, "NodeChainType", "A part of the loop.")
        .value("PartChain", IkStream::PartChain)
        .value("ToolChain", IkStream::ToolChain)
        .value("PartToToolChain", IkStream::PartToToolChain)
        .export_values();
    py::enum_<IkStream::JointLockType>(stream, "JointLockType", "Which locks are looked at.")
        .value("LocalLockOnly", IkStream::LocalLockOnly)
        .value("GlobalLockOnly", IkStream::GlobalLockOnly)
        .value("GlobalOrLocalLock", IkStream::GlobalOrLocalLock)
        .export_values();
    stream.def(py::init<>(), "A stream without chains.")
        .def(
            "SetId", [](Stream& one, int id) { one.Get().SetId(id); }, py::arg("id"), Guard(),
            "Sets the number by which a machine finds it.")
        .def(
            "GetId", [](Stream& one) { return one.Get().GetId(); }, Guard(), "That number.")
        .def("AddChain", &Stream::AddChain, py::arg("chain").none(false), Guard(),
             "Appends a chain. Its joints can be locked locally from now on.")
        .def("GetChain", &ChainAt, py::arg("index"), Guard(),
             "A chain; an IndexError where there is none.")
        .def(
            "NumChains", [](const Stream& one) { return one.Chains().size(); }, Guard(),
            "The number of chains.")
        .def("GetSubNodeChain", &SubNodes, py::arg("type"), Guard(),
             "The nodes of a part of the loop, in order.")
        .def(
            "GetJointStates", [](Stream& one) { return StatesOf(one.Get().GetJointStates()); },
            Guard(), "The joints of all chains, each once, at their current values.")
        .def(
            "SolveFK", &Forward, py::arg("states") = py::none(), py::arg("commit") = false,
            py::arg("tool_only") = false, Guard(),
            "The tool in part coordinates, or machine coordinates when `tool_only`.\n\n"
            "Joints that `states` does not hold stand at their current values; `commit` moves the\n"
            "others.")
        .def("SolveIK", &Inverse, py::arg("target"), py::arg("tool_only") = false,
             py::arg("limit_type") = IkJoint::JtLimitAll, py::arg("lock_rotary") = false, Guard(),
             "From the joints' current values to joint values that put the tool at `target`.\n\n"
             "Returns whether it converged, with every joint's value; where not, with the joints\n"
             "that ended beyond their bounds. Converged is a squared error of at most 1e-8, in\n"
             "squared lengths plus squared degrees.");
    BindLocks(stream);
    BindPartSpace(stream);
}

} // namespace bindings
