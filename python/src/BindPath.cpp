#include "Arrays.h"
#include "Bindings.h"
#include "Unlocked.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "text/InputError.h"
#include "text/Quoted.h"
#include "toolpath/PathBuilder.h"
#include "toolpath/ToolpathFile.h"

namespace py = pybind11;

namespace bindings
{

namespace
{

using PathHandle = std::shared_ptr<host::Toolpath>;
using Flags = py::array_t<bool, py::array::c_style | py::array::forcecast>;

constexpr std::size_t kPose = 6;

host::LengthUnit UnitNamed(const std::string& name)
{
    if (name != "mm" && name != "inch") {
        throw host::InputError("length_unit",
                               host::Quoted(name) + " is not known; give mm or inch");
    }
    return name == "mm" ? host::LengthUnit::Millimetre : host::LengthUnit::Inch;
}

PathHandle Read(const std::filesystem::path& file, const std::optional<std::string>& format,
                const std::string& unit)
{
    std::optional<host::ToolpathFormat> known;
    if (format) {
        known = host::FindToolpathFormat(*format);
        if (!known) {
            throw host::InputError("format",
                                   host::Quoted(*format) + " is none of apt, csv, nc; give one");
        }
    }
    const host::LengthUnit inUnit = UnitNamed(unit);
    const Unlocked others;
    return std::make_shared<host::Toolpath>(host::ReadToolpath(file, known, inUnit));
}

host::ToolPoint PointFrom(const double* numbers, std::size_t row)
{
    const auto direction = host::Normalised({numbers[3], numbers[4], numbers[5]});
    if (!direction) {
        throw host::InputError("points", "row " + std::to_string(row) +
                                             " has a tool direction without length; give i, j, k");
    }
    host::ToolPoint point;
    point.line = static_cast<int>(row) + 1;
    point.position = {numbers[0], numbers[1], numbers[2]};
    point.direction = *direction;
    return point;
}

PathHandle FromArrays(const NumberArray& points, const Flags& rapid, const std::string& name)
{
    const Rows rows = RowsOf("points", points);
    if (rows.width != kPose || rows.count == 0 || rows.count > host::kMostPathPoints) {
        throw host::InputError("points", "a toolpath has rows of x, y, z, i, j, k, at least one");
    }
    if (rapid.ndim() != 1 || static_cast<std::size_t>(rapid.shape(0)) != rows.count) {
        throw host::InputError("rapid", "give one flag for each point");
    }
    auto path = std::make_shared<host::Toolpath>();
    path->file = name;
    for (std::size_t row = 0; row < rows.count; ++row) {
        path->points.push_back(PointFrom(rows.At(row), row));
        path->points.back().isRapid = rapid.at(row);
    }
    host::Operation operation;
    operation.line = 1;
    path->operations.push_back(operation);
    return path;
}

py::array_t<double> Points(const host::Toolpath& path)
{
    std::vector<double> numbers;
    numbers.reserve(path.points.size() * kPose);
    for (const host::ToolPoint& point : path.points) {
        numbers.insert(numbers.end(), point.position.begin(), point.position.end());
        numbers.insert(numbers.end(), point.direction.begin(), point.direction.end());
    }
    return ArrayOf(std::move(numbers), {path.points.size(), kPose});
}

template <class T, class Member>
py::array_t<T> ColumnOf(const host::Toolpath& path, Member host::ToolPoint::*member)
{
    py::array_t<T> column(static_cast<py::ssize_t>(path.points.size()));
    auto* value = column.mutable_data();
    for (const host::ToolPoint& point : path.points) {
        *value++ = point.*member;
    }
    return column;
}

py::list Operations(const host::Toolpath& path)
{
    py::list all;
    for (const host::Operation& operation : path.operations) {
        py::dict one;
        one["name"] = operation.name;
        one["line"] = operation.line;
        one["first_point"] = operation.firstPoint;
        one["tool_number"] = operation.toolNumber;
        one["tool_length"] = operation.toolLength;
        all.append(one);
    }
    return all;
}

} // namespace

void BindPath(py::module_& module)
{
    py::class_<host::Toolpath, PathHandle>(module, "Path", "What a toolpath asks for.",
                                           py::is_final())
        .def_static("read", &Read, py::arg("file"), py::arg("format"), py::arg("length_unit"),
                    R"(From a file; lengths come out in the unit, "mm" or "inch".)")
        .def_static("from_arrays", &FromArrays, py::arg("points"), py::arg("rapid"),
                    py::arg("name"), "From rows of x, y, z, i, j, k, one operation.")
        .def_property_readonly(
            "file", [](const host::Toolpath& path) { return path.file; }, "What it was read from.")
        .def_property_readonly("points", &Points, "Rows of x, y, z, i, j, k.")
        .def_property_readonly(
            "lines",
            [](const host::Toolpath& path) { return ColumnOf<int>(path, &host::ToolPoint::line); },
            "The line of each point.")
        .def_property_readonly(
            "rapid",
            [](const host::Toolpath& path) {
                return ColumnOf<bool>(path, &host::ToolPoint::isRapid);
            },
            "Whether a rapid leads to each point.")
        .def_property_readonly(
            "operation",
            [](const host::Toolpath& path) {
                return ColumnOf<int>(path, &host::ToolPoint::operation);
            },
            "The operation of each point.")
        .def_property_readonly("operations", &Operations, "What is said of each operation.")
        .def_property_readonly(
            "warnings", [](const host::Toolpath& path) { return path.warnings; },
            "What the reader passed over, in sentences.");
}

} // namespace bindings
