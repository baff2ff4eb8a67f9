#include "Arrays.h"
#include "Bindings.h"
#include "Model.h"
#include "Patience.h"
#include "Plan.h"
#include "Serial.h"
#include "Unlocked.h"

#include <array>
#include <memory>
#include <optional>
#include <string>

#include <pybind11/stl.h>

#include "table/RowFlagNames.h"

namespace py = pybind11;

namespace bindings
{

namespace
{

using Options = host::SolveOptions;

py::list EventsOf(const PlannedMotion& motion)
{
    py::list events;
    for (const host::Event& event : motion.events) {
        events.append(
            py::make_tuple(host::Name(event.kind), event.point, event.line, event.sentence));
    }
    return events;
}

py::dict Columns(PlannedMotion motion)
{
    constexpr std::size_t kPoseWidth = 6;
    const std::size_t rows = motion.point.size();
    py::dict columns;
    columns["events"] = EventsOf(motion);
    columns["warnings"] = motion.warnings;
    columns["joints"] = ArrayOf(std::move(motion.joints), {rows, motion.axes.size()});
    columns["axes"] = py::tuple(py::cast(motion.axes));
    columns["rotary"] = ArrayOf(std::move(motion.areRotary)).view("?");
    columns["point"] = ArrayOf(std::move(motion.point));
    columns["line"] = ArrayOf(std::move(motion.line));
    columns["asked"] = ArrayOf(std::move(motion.asked), {rows, kPoseWidth});
    columns["position_error"] = ArrayOf(std::move(motion.positionError));
    columns["direction_error"] = ArrayOf(std::move(motion.directionError));
    columns["branch"] = ArrayOf(std::move(motion.branch));
    columns["flags"] = ArrayOf(std::move(motion.flags));
    return columns;
}

py::dict Plan(const Model& model, const host::Toolpath& path, const Options& options)
{
    // Python may change its own meanwhile: NOLINTNEXTLINE(performance-unnecessary-copy-*)
    const Options copy = options;
    PlannedMotion motion;
    {
        const Unlocked others;
        Patience patience;
        motion = PlanMotion(model.Description(), path, copy, [&] { patience.Check(); });
    }
    return Columns(std::move(motion));
}

py::tuple FlagNames()
{
    py::tuple names(host::kRowFlagNames.size());
    for (std::size_t i = 0; i < host::kRowFlagNames.size(); ++i) {
        names[i] = std::string(host::kRowFlagNames[i].name);
    }
    return names;
}

void BindPlanOptions(py::module_& module)
{
    py::class_<Options>(module, "PlanOptions", "The program's options, in its units.",
                        py::is_final())
        .def(py::init<>(), "The program's defaults.")
        .def_property(
            "stream", [](const Options& options) { return options.machine.stream; },
            [](Options& options, std::optional<int> id) { options.machine.stream = id; },
            "The usual stream.")
        .def_readwrite("operation_streams", &Options::operationStreams, "\"NAME=ID\"")
        .def_readwrite("tool_length", &Options::toolLength, "[length]")
        .def_readwrite("locks", &Options::locks, "\"B=0.5\" [length] or [rad]")
        .def_readwrite("tolerance", &Options::tolerance, "[length^2] plus [deg^2]")
        .def_readwrite("max_iterations", &Options::maxIterations, "Passes of one solve.")
        .def_readwrite("linear_tol", &Options::linearTolerance, "[length]")
        .def_readwrite("angle_tol_deg", &Options::angleTolerance_deg, "[deg]")
        .def_readwrite("points_only", &Options::pointsOnly, "One row for each point.")
        .def_readwrite("pole_cone_deg", &Options::poleCone_deg, "[deg]")
        .def_readwrite("start", &Options::start, "home or free")
        .def_readwrite("prefer", &Options::prefer, "\"A-\"")
        .def_property(
            "weights",
            [](const Options& options) {
                const host::CostWeights& weights = options.weights;
                return py::make_tuple(weights.travel, weights.limits, weights.pole,
                                      weights.preference);
            },
            [](Options& options, const std::array<double, 4>& weights) {
                options.weights = {weights[0], weights[1], weights[2], weights[3]};
            },
            "Of travel, limits, pole and preference.")
        .def_readwrite("rewind", &Options::rewind, "rapids or retract")
        .def_readwrite("branch_change", &Options::branchChange, "rapids or retract")
        .def_readwrite("retract", &Options::retract, "[length]")
        .def_readwrite("tool_roll", &Options::toolRoll, "fixed, feed, search or open")
        .def_readwrite("roll_reference", &Options::rollReference, "x, y, z")
        .def_readwrite("in_radians", &Options::inRadians, "What locks are in.");
}

} // namespace

void BindPlan(py::module_& module)
{
    BindPlanOptions(module);
    module.attr("FLAG_NAMES") = FlagNames();
    module.def("plan", &Plan, py::arg("model"), py::arg("path"), py::arg("options"),
               py::call_guard<Serial>(), "The motion along a path, column by column.");
}

} // namespace bindings
