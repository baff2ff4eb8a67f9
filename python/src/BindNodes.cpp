#include "Bindings.h"
#include "Handles.h"
#include "Serial.h"
#include "States.h"

#include <cstdint>
#include <optional>

#include <IkJoint.h>

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;
using NodeHandle = std::shared_ptr<IkNode>;

std::vector<NodeHandle> Children(const IkNode& node)
{
    std::vector<NodeHandle> children;
    for (IkNode* child : node.GetKidList()) {
        children.push_back(HandleOf(child));
    }
    return children;
}

IkXformMat XformAt(IkNode& node, std::optional<double> value)
{
    return node.GetXformMat(value ? &*value : nullptr);
}

std::wstring NodeText(const py::object& node)
{
    const auto name = py::cast<std::wstring>(node.attr("__class__").attr("__name__"));
    return L"<" + name + L" \"" + node.cast<const IkNode&>().GetName() + L"\">";
}

void BindNode(py::module_& module)
{
    py::class_<IkNode, NodeHandle>(
        module, "IkNode",
        "What bodies and joints have in common: a name, frames, a place in the tree.\n\n"
        "While Python refers to one node, its whole tree lives. Two references to one node are\n"
        "equal. A node's original frame is its fixed transform from its parent.",
        py::is_final())
        .def("GetName", &IkNode::GetName, Guard(), "The name.")
        .def("SetName", &IkNode::SetName, py::arg("name"), Guard(), "Gives it another name.")
        .def("GetType", &IkNode::GetType, Guard(), "The type, a text for the host's own use.")
        .def("SetType", &IkNode::SetType, py::arg("type"), Guard(), "Sets that text.")
        .def("GetOrigFrame", &IkNode::GetOrigFrame, Guard(),
             "A copy of the fixed transform from the parent.")
        .def("SetOrigFrame", &IkNode::SetOrigFrame, py::arg("frame"), Guard(),
             "Sets the fixed transform from the parent.")
        .def("GetRelFrame", &IkNode::GetRelFrame, Guard(), "The relative frame, as last stored.")
        .def("SetRelFrame", &IkNode::SetRelFrame, py::arg("frame"), Guard(),
             "Stores a relative frame.")
        .def("GetWorldFrame", &IkNode::GetWorldFrame, Guard(),
             "The frame in machine coordinates, as last stored.")
        .def("SetWorldFrame", &IkNode::SetWorldFrame, py::arg("frame"), Guard(),
             "Stores a frame in machine coordinates.")
        .def("GetXformMat", &XformAt, py::arg("value") = py::none(), Guard(),
             "The transform from the parent, of a joint at `value` or else at its current one.")
        .def(
            "GetParentPtr", [](const IkNode& node) { return HandleOf(node.GetParentPtr()); },
            Guard(), "The node that it hangs on, or None.")
        .def("GetKidList", &Children, Guard(), "The nodes that hang on it, a new list.")
        .def("AddChild", &Tree::Hang, py::arg("child").none(false), Guard(),
             "Hangs a node, with all that hangs on it, on this one.\n\n"
             "A ValueError where the child hangs somewhere already, is this node or above it, or\n"
             "makes the tree more than 1000 nodes deep.")
        .def(
            "SearchByName",
            [](IkNode& node, const std::wstring& name) {
                return HandleOf(node.SearchByName(name));
            },
            py::arg("name"), Guard(), "The first node of this name from here down, or None.")
        .def("IsJoint", &IkNode::IsJoint, Guard(), "Whether it is a joint.")
        .def("IsDirty", &IkNode::IsDirty, Guard(), "Whether it changed since UpdateFrames.")
        .def("UpdateFrames", &IkNode::UpdateFrames, Guard(),
             "Marks this node and all below it as not changed.")
        .def(
            "__eq__",
            [](const IkNode& node, const py::object& other) {
                return py::isinstance<IkNode>(other) && other.cast<const IkNode*>() == &node;
            },
            py::arg("other"), "Whether both are one and the same node.")
        .def(
            "__hash__",
            [](const IkNode& node) { return reinterpret_cast<std::uintptr_t>(&node) >> 4U; },
            "By identity.")
        .def("__repr__", &NodeText, "The class and the name.");
    py::class_<IkBody, IkNode, std::shared_ptr<IkBody>>(
        module, "IkBody", "A rigid body: its transform is its original frame.", py::is_final())
        .def(py::init(&Tree::Plant<IkBody>), py::arg("name") = L"NA", "A body by itself.");
}

void BindEnums(const py::class_<IkJoint, IkNode, std::shared_ptr<IkJoint>>& joint)
{
    py::enum_<IkJoint::JtPrimitives>(joint, "JtPrimitives",
                                     "Kind of motion, in the axes of the original frame.")
        .value("JtPrimNone", IkJoint::JtPrimNone)
        .value("JtPrimTransX", IkJoint::JtPrimTransX)
        .value("JtPrimTransY", IkJoint::JtPrimTransY)
        .value("JtPrimTransZ", IkJoint::JtPrimTransZ)
        .value("JtPrimTransArbitrary", IkJoint::JtPrimTransArbitrary)
        .value("JtPrimRotX", IkJoint::JtPrimRotX)
        .value("JtPrimRotY", IkJoint::JtPrimRotY)
        .value("JtPrimRotZ", IkJoint::JtPrimRotZ)
        .value("JtPrimRotArbitrary", IkJoint::JtPrimRotArbitrary)
        .export_values();
    py::enum_<IkJoint::JointLimitTypes>(joint, "JointLimitTypes",
                                        "Which joints' ranges a solve respects.")
        .value("JtLimitNone", IkJoint::JtLimitNone)
        .value("JtLimitLinear", IkJoint::JtLimitLinear)
        .value("JtLimitRotary", IkJoint::JtLimitRotary)
        .value("JtLimitAll", IkJoint::JtLimitAll)
        .export_values();
}

void BindJoint(py::module_& module)
{
    py::class_<IkJoint, IkNode, std::shared_ptr<IkJoint>> joint(
        module, "IkJoint",
        "What all joints have. Values, bounds and initial values are lengths of a linear joint "
        "and\n"
        "radians of a rotary one. Nothing here clamps a value.",
        py::is_final());
    BindEnums(joint);
    joint.def("GetCurValue", &IkJoint::GetCurValue, Guard(), "The value [length] or [rad].")
        .def("SetCurValue", &IkJoint::SetCurValue, py::arg("value"), Guard(),
             "Moves the joint [length] or [rad], whatever its range.")
        .def("GetLowBound", &IkJoint::GetLowBound, Guard(), "The low bound [length] or [rad].")
        .def("GetHiBound", &IkJoint::GetHiBound, Guard(), "The high bound [length] or [rad].")
        .def("SetBounds", &IkJoint::SetBounds, py::arg("low"), py::arg("high"), Guard(),
             "Sets both bounds [length] or [rad].")
        .def("GetInitialValue", &IkJoint::GetInitialValue, Guard(),
             "The value at which the joint's transform is its original frame.")
        .def("SetInitialValue", &IkJoint::SetInitialValue, py::arg("value"), Guard(),
             "Sets that value [length] or [rad].")
        .def("IsLocked", &IkJoint::IsLocked, Guard(), "Whether every solve leaves it alone.")
        .def("SetIsLocked", &IkJoint::SetIsLocked, py::arg("locked"), Guard(),
             "Has every solve leave it alone, or not.")
        .def("GetJtPrimitive", &IkJoint::GetJtPrimitive, Guard(), "The kind of motion.")
        .def("SetJtPrimitive", &IkJoint::SetJtPrimitive, py::arg("primitive"), Guard(),
             "Sets the kind of motion.")
        .def("IsDirectionReversed", &IkJoint::IsDirectionReversed, Guard(),
             "Whether positive values move it against its axis.")
        .def("SetDirectionReversed", &IkJoint::SetDirectionReversed, py::arg("reversed"), Guard(),
             "Has positive values move it against its axis, or along it.")
        .def("IsRotary", &IkJoint::IsRotary, Guard(), "Whether it turns.");
    py::class_<IkJtPrism, IkJoint, std::shared_ptr<IkJtPrism>>(
        module, "IkJtPrism",
        "A linear joint, along x unless said otherwise. Set its bounds: they begin inverted.",
        py::is_final())
        .def(py::init(&Tree::Plant<IkJtPrism>), py::arg("name") = L"NA", "A joint by itself.");
    py::class_<IkJtRot, IkJoint, std::shared_ptr<IkJtRot>>(
        module, "IkJtRot", "A rotary joint, about z and a turn either way unless said otherwise.",
        py::is_final())
        .def(py::init(&Tree::Plant<IkJtRot>), py::arg("name") = L"NA", "A joint by itself.");
}

} // namespace

void BindNodes(py::module_& module)
{
    BindNode(module);
    BindJoint(module);
}

} // namespace bindings
