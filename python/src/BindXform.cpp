#include "Arrays.h"
#include "Bindings.h"

#include <sstream>
#include <stdexcept>
#include <utility>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Place = std::pair<int, int>;

double& ElementAt(IkXformMat& frame, const Place& at)
{
    constexpr int kSize = 4;
    const auto& [row, column] = at;
    if (row < 0 || row >= kSize || column < 0 || column >= kSize) {
        throw std::out_of_range("a frame has rows and columns 0 to 3");
    }
    return frame[row][column];
}

std::string FrameText(const IkXformMat& frame)
{
    return "IkXformMat(" + std::string(py::repr(ArrayOf(frame).attr("tolist")())) + ")";
}

} // namespace

void BindXform(py::module_& module)
{
    py::class_<IkXformMat>(
        module, "IkXformMat",
        "A homogeneous transform of 4 by 4 numbers; angles [rad], lengths in the host's unit.\n\n"
        "base_to_tool maps points of the tool frame to the base frame, and\n"
        "base_to_tool @ tool_to_tip is base_to_tip. Wherever one is asked for, an array of 4 by 4\n"
        "numbers will do.")
        .def(py::init<>(), "The identity.")
        .def(py::init(&FrameFrom), py::arg("array"), "From an array of 4 by 4 numbers.")
        .def_static("RotX", &IkXformMat::RotX, py::arg("a"), "Rotation about x by `a` [rad].")
        .def_static("RotY", &IkXformMat::RotY, py::arg("a"), "Rotation about y by `a` [rad].")
        .def_static("RotZ", &IkXformMat::RotZ, py::arg("a"), "Rotation about z by `a` [rad].")
        .def_static("Translate", &IkXformMat::Translate, py::arg("x"), py::arg("y"), py::arg("z"),
                    "Offset [length].")
        .def("Eye", &IkXformMat::Eye, "Makes this the identity.")
        .def("RotXThis", &IkXformMat::RotXThis, py::arg("a"),
             "this = this @ RotX(a): turns about this frame's own x axis [rad].")
        .def("RotYThis", &IkXformMat::RotYThis, py::arg("a"),
             "this = this @ RotY(a): turns about this frame's own y axis [rad].")
        .def("RotZThis", &IkXformMat::RotZThis, py::arg("a"),
             "this = this @ RotZ(a): turns about this frame's own z axis [rad].")
        .def("TranslateThis", &IkXformMat::TranslateThis, py::arg("x"), py::arg("y"), py::arg("z"),
             "this = this @ Translate(x, y, z): moves along this frame's own axes [length].")
        .def("QuickInvert", &IkXformMat::QuickInvert,
             "The inverse of a rigid transform; of another the result is not the inverse.")
        .def("QuickInvertThis", &IkXformMat::QuickInvertThis, "Inverts this rigid transform.")
        .def("IsOrthogonal", &IkXformMat::IsOrthogonal, py::arg("tol"),
             "Whether the axes are across each other and of length 1, as the library tests it.")
        .def(
            "__matmul__",
            [](const IkXformMat& a, const IkXformMat& b) { return IkXformMat(a * b); },
            py::is_operator(), "The product: the motion of the right one in the left one's frame.")
        .def(
            "__getitem__", [](IkXformMat& frame, Place at) { return ElementAt(frame, at); },
            py::arg("at"), "The element at (row, column), from 0.")
        .def(
            "__setitem__",
            [](IkXformMat& frame, Place at, double value) { ElementAt(frame, at) = value; },
            py::arg("at"), py::arg("value"), "Sets the element at (row, column), from 0.")
        .def(
            "__array__",
            [](const IkXformMat& frame, const py::args& /*dtype*/, const py::kwargs& /*copy*/) {
                return ArrayOf(frame);
            },
            "A copy, 4 by 4.")
        .def("__repr__", &FrameText, "As Python would write it.")
        .def(
            "__copy__", [](const IkXformMat& frame) { return IkXformMat(frame); }, "A copy.")
        .def(
            "__deepcopy__",
            [](const IkXformMat& frame, const py::dict& /*memo*/) { return IkXformMat(frame); },
            py::arg("memo"), "A copy.");
    py::implicitly_convertible<py::array, IkXformMat>();
    py::implicitly_convertible<py::sequence, IkXformMat>();
}

} // namespace bindings
