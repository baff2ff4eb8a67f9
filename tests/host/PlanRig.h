#ifndef TRUNNION_TESTS_HOST_PLAN_RIG_H
#define TRUNNION_TESTS_HOST_PLAN_RIG_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "MillTexts.h"
#include "geometry/Units.h"
#include "motion/Event.h"
#include "motion/MotionRow.h"
#include "planner/PathPlan.h"
#include "support/Bits.h"
#include "toolpath/Toolpath.h"

// Planning a path on a machine, as the tests do it.
namespace test
{

constexpr bool kRapid = true;
constexpr bool kCut = false;

/// A direction that leans by `tilt_deg` from z towards `azimuth_deg` from x.
inline host::Vec3 Leaning(double tilt_deg, double azimuth_deg)
{
    const double tilt = host::ToRadians(tilt_deg);
    const double azimuth = host::ToRadians(azimuth_deg);
    return {std::sin(tilt) * std::cos(azimuth), std::sin(tilt) * std::sin(azimuth), std::cos(tilt)};
}

/// A path, point by point: the line of point n is 10 n + 11.
class PathText
{
  public:
    PathText& To(const host::Vec3& position, const host::Vec3& direction, bool isRapid = kCut)
    {
        host::ToolPoint point;
        point.line = 11 + 10 * static_cast<int>(path.points.size());
        point.operation = static_cast<int>(path.operations.size()) - 1;
        point.position = position;
        point.direction = direction;
        point.isRapid = isRapid;
        path.points.push_back(point);
        return *this;
    }
    PathText& NextOperation(const std::string& name)
    {
        host::Operation operation;
        operation.name = name;
        operation.firstPoint = path.points.size();
        path.operations.push_back(operation);
        return *this;
    }
    host::Toolpath Path() const { return path; }

  private:
    host::Toolpath path = [] {
        host::Toolpath empty;
        empty.file = "part.cl";
        empty.operations.emplace_back();
        return empty;
    }();
};

/// The motion that a plan makes.
struct Motion
{
    std::vector<host::MotionRow> rows;
    std::vector<host::Event> events;

    std::size_t NumFailed() const
    {
        return static_cast<std::size_t>(std::count_if(
            rows.begin(), rows.end(), [](const auto& row) { return row.flags.hasFailed; }));
    }
    std::size_t NumInserted() const
    {
        return static_cast<std::size_t>(std::count_if(
            rows.begin(), rows.end(), [](const auto& row) { return row.flags.isInserted; }));
    }
    /// The rows of the points themselves, one for each.
    std::vector<host::MotionRow> PointRows() const
    {
        std::vector<host::MotionRow> own;
        std::copy_if(rows.begin(), rows.end(), std::back_inserter(own),
                     [](const auto& row) { return !row.flags.isInserted && !row.flags.isRewind; });
        return own;
    }
    std::vector<host::Event> EventsOf(host::EventKind kind) const
    {
        std::vector<host::Event> some;
        std::copy_if(events.begin(), events.end(), std::back_inserter(some),
                     [kind](const auto& event) { return event.kind == kind; });
        return some;
    }
};

/// A machine, a path and how it is planned.
struct PlanRig
{
    PlanRig(const std::string& text, host::Toolpath ofPath)
        : machine(MachineFrom(text)), path(std::move(ofPath)),
          toolLengths(path.operations.size(), 0.0),
          streams(path.operations.size(), &machine.streams.front())
    {}

    host::PlanRequest Request() const
    {
        return {machine, path, streams, toolLengths, {}, options, settings};
    }
    Motion Build(host::PathPlan& plan) const
    {
        Motion motion;
        plan.Build({[&](const host::MotionRow& row) { motion.rows.push_back(row); },
                    [&](const host::Event& event) { motion.events.push_back(event); },
                    [](std::size_t) { return true; }});
        return motion;
    }
    Motion Plan() const
    {
        host::PathPlan plan(Request());
        for (std::size_t block = 0; block < plan.NumBlocks(); ++block) {
            plan.Append(plan.FindBlock(block));
        }
        return Build(plan);
    }
    const host::Axis& AxisNamed(const std::string& name) const
    {
        return *std::find_if(machine.axes.begin(), machine.axes.end(),
                             [&](const host::Axis& axis) { return axis.name == name; });
    }
    /// Its place among the joint values of a row.
    std::size_t IndexOf(const std::string& name) const
    {
        return static_cast<std::size_t>(&AxisNamed(name) - machine.axes.data());
    }

    host::LoadedMachine machine;
    host::Toolpath path;
    std::vector<double> toolLengths;
    std::vector<const host::LoadedStream*> streams;
    host::PlanOptions options;
    host::SolverSettings settings;
};

} // namespace test

#endif
