#include "Bindings.h"
#include "Model.h"
#include "Serial.h"
#include "Unlocked.h"

#include <memory>
#include <optional>
#include <string>

#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;
using ModelHandle = std::shared_ptr<Model>;

ModelHandle Load(const std::filesystem::path& file, const std::optional<std::string>& toolLink,
                 const std::optional<std::string>& partLink)
{
    return std::make_shared<Model>(host::DescribeMachine(file, {toolLink, partLink}));
}

py::list Axes(const Model& model)
{
    py::list all;
    const host::MachineDescription& machine = model.Description();
    for (const host::AxisDescription& axis : machine.axes) {
        py::dict one;
        one["name"] = axis.name.value;
        one["type"] = axis.isRotary ? "rotary" : "linear";
        one["parent"] = axis.parent.value;
        one["unit"] = axis.isRotary ? "rad" : std::string(host::Symbol(machine.length));
        one["limits"] = py::make_tuple(axis.limits.low, axis.limits.high);
        one["direction"] = py::tuple(py::cast(axis.direction));
        one["point"] = py::tuple(py::cast(axis.point));
        one["initial"] = axis.initial;
        one["word"] = axis.word;
        one["word_sign"] = axis.wordSign;
        all.append(one);
    }
    return all;
}

py::list Mounts(const Model& model)
{
    py::list all;
    for (const host::MountDescription& mount : model.Description().mounts) {
        py::dict one;
        one["name"] = mount.name.value;
        one["kind"] = mount.kind == host::MountKind::Tool ? "tool" : "part";
        one["parent"] = mount.parent.value;
        one["origin"] = py::tuple(py::cast(mount.origin));
        one["z_axis"] = py::tuple(py::cast(mount.zAxis));
        one["x_axis"] = py::tuple(py::cast(mount.xAxis));
        all.append(one);
    }
    return all;
}

py::list Streams(const Model& model)
{
    py::list all;
    for (const host::LoadedStream& stream : model.Get().streams) {
        all.append(py::make_tuple(stream.id, stream.tool, stream.part, stream.axes));
    }
    return all;
}

py::array_t<double> Forward(Model& model, std::size_t stream, const NumberArray& joints,
                            double toolLength, bool asFrames)
{
    const Rows rows = RowsOf("joints", joints);
    std::vector<double> poses;
    {
        const Unlocked others;
        poses = model.Forward(stream, rows, toolLength, asFrames);
    }
    constexpr std::size_t kFrame = 4;
    constexpr std::size_t kPoseWidth = 6;
    return asFrames ? ArrayOf(std::move(poses), {rows.count, kFrame, kFrame})
                    : ArrayOf(std::move(poses), {rows.count, kPoseWidth});
}

py::tuple Arrays(SolvedPoses solved, std::size_t axes)
{
    const std::size_t rows = solved.converged.size();
    return py::make_tuple(ArrayOf(std::move(solved.joints), {rows, axes}),
                          ArrayOf(std::move(solved.converged)).view("?"),
                          ArrayOf(std::move(solved.positionError)),
                          ArrayOf(std::move(solved.directionError)));
}

py::tuple Inverse(Model& model, std::size_t stream, const NumberArray& poses,
                  const NumberArray& starts, const InverseOptions& options)
{
    const Rows rows = RowsOf("poses", poses);
    const Rows from = RowsOf("start", starts);
    SolvedPoses solved;
    {
        const Unlocked others;
        solved = model.Inverse(stream, rows, from, options);
    }
    return Arrays(std::move(solved), from.width);
}

py::tuple Branches(Model& model, std::size_t stream, const NumberArray& pose,
                   const NumberArray& start, const InverseOptions& options)
{
    const Rows row = RowsOf("poses", pose);
    const Rows from = RowsOf("start", start);
    SolvedPoses solved;
    {
        const Unlocked others;
        solved = model.Branches(stream, row, from, options);
    }
    return Arrays(std::move(solved), from.width);
}

std::string Diagnose(Model& model, std::size_t stream, const NumberArray& pose,
                     const NumberArray& start, double toolLength, bool inDegrees)
{
    return model.Diagnose(stream, RowsOf("poses", pose), RowsOf("start", start), toolLength,
                          inDegrees ? host::AngleUnit::Degree : host::AngleUnit::Radian);
}

void BindInverseOptions(py::module_& module)
{
    py::enum_<StartFrom>(module, "StartFrom", "Where the solve for a pose starts.")
        .value("previous", StartFrom::Previous)
        .value("given", StartFrom::Given)
        .value("search", StartFrom::Search);
    py::class_<InverseOptions>(module, "InverseOptions", "What poses are solved for.",
                               py::is_final())
        .def(py::init([](bool limits, double toolLength, std::vector<std::size_t> locks,
                         double tolerance, int maxIterations, StartFrom from) {
                 return InverseOptions{
                     limits, toolLength, std::move(locks), {tolerance, maxIterations}, from};
             }),
             py::kw_only(), py::arg("limits"), py::arg("tool_length"), py::arg("locks"),
             py::arg("tolerance"), py::arg("max_iterations"), py::arg("start_from"), "All of it.");
}

} // namespace

void BindModel(py::module_& module)
{
    BindInverseOptions(module);
    py::class_<Model, ModelHandle>(module, "Model", "A machine that was read from a file.",
                                   py::is_final())
        .def_static("load", &Load, py::arg("file"), py::arg("tool_link"), py::arg("part_link"),
                    "Reads a machine file.")
        .def_property_readonly(
            "file", [](const Model& model) { return model.Description().file; }, "Its name.")
        .def_property_readonly(
            "name", [](const Model& model) { return model.Description().name; },
            "What the machine is called.")
        .def_property_readonly(
            "length_unit",
            [](const Model& model) { return std::string(host::Symbol(model.Get().length)); },
            R"("mm" or "inch".)")
        .def_property_readonly("axes", &Axes, "What is said of each axis.")
        .def_property_readonly("mounts", &Mounts, "What is said of each mount.")
        .def_property_readonly("streams", &Streams, "Id, tool, part and axes of each stream.")
        .def("index_of", &Model::IndexOf, py::arg("id"), Guard(), "The index of a stream.")
        .def("forward", &Forward, py::arg("stream"), py::arg("joints"), py::arg("tool_length"),
             py::arg("as_frames"), Guard(), "The poses of rows of joint values.")
        .def("inverse", &Inverse, py::arg("stream"), py::arg("poses"), py::arg("starts"),
             py::arg("options"), Guard(),
             "Joint values for rows of poses: joints, converged, position and direction errors.")
        .def("branches", &Branches, py::arg("stream"), py::arg("pose"), py::arg("start"),
             py::arg("options"), Guard(), "The same for the distinct ways to stand at one pose.")
        .def("diagnose", &Diagnose, py::arg("stream"), py::arg("pose"), py::arg("start"),
             py::arg("tool_length"), py::arg("degrees"), Guard(), "Why a pose is not reached.");
}

} // namespace bindings
