#include "Plan.h"

#include <cstddef>
#include <limits>
#include <sstream>

#include "app/SolveSetup.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "planner/PathPlan.h"
#include "table/RowFlagNames.h"

namespace bindings
{

namespace
{

unsigned char BitsOf(const host::RowFlags& flags)
{
    unsigned bits = 0;
    for (std::size_t i = 0; i < host::kRowFlagNames.size(); ++i) {
        bits |= flags.*host::kRowFlagNames[i].member ? 1U << i : 0U;
    }
    return static_cast<unsigned char>(bits);
}

void Add(PlannedMotion& motion, const host::MotionRow& row, int line)
{
    constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
    const bool hasFailed = row.flags.hasFailed;
    if (hasFailed) {
        motion.joints.insert(motion.joints.end(), motion.axes.size(), kNoValue);
    } else {
        motion.joints.insert(motion.joints.end(), row.joints.begin(), row.joints.end());
    }
    motion.point.push_back(static_cast<std::int64_t>(row.point));
    motion.line.push_back(line);
    motion.asked.insert(motion.asked.end(), row.asked.position.begin(), row.asked.position.end());
    motion.asked.insert(motion.asked.end(), row.asked.direction.begin(), row.asked.direction.end());
    motion.positionError.push_back(hasFailed ? kNoValue : row.error.position);
    motion.directionError.push_back(hasFailed ? kNoValue
                                              : host::ToRadians(row.error.direction_deg));
    motion.branch.push_back(hasFailed ? 0 : row.branch);
    motion.flags.push_back(BitsOf(row.flags));
}

} // namespace

PlannedMotion PlanMotion(const host::MachineDescription& description, const host::Toolpath& path,
                         const host::SolveOptions& options, const std::function<void()>& mayGoOn)
{
    host::LoadedMachine machine = host::AssembleMachine(description);
    std::ostringstream warnings;
    const host::PlanRequest request = host::RequestFrom(options, machine, path, warnings);
    host::PathPlan plan(request);
    while (plan.NumAppended() < plan.NumBlocks()) {
        mayGoOn();
        plan.Append(plan.FindBlock(plan.NumAppended()));
    }
    PlannedMotion motion;
    for (const host::Axis* axis : plan.Axes()) {
        motion.axes.push_back(axis->name);
        motion.areRotary.push_back(axis->isRotary ? 1 : 0);
    }
    plan.Build({[&](const host::MotionRow& row) { Add(motion, row, path.points[row.point].line); },
                [&](const host::Event& event) { motion.events.push_back(event); },
                [&](std::size_t /*point*/) {
                    mayGoOn();
                    return true;
                }});
    motion.warnings = warnings.str();
    return motion;
}

} // namespace bindings
