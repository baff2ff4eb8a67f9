#ifndef TRUNNION_PYTHON_PLAN_H
#define TRUNNION_PYTHON_PLAN_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/SolveOptions.h"
#include "machine/MachineDescription.h"
#include "motion/Event.h"
#include "toolpath/Toolpath.h"

namespace bindings
{

/// A motion column by column, one entry for each row. NaN where a row has failed.
struct PlannedMotion
{
    std::vector<std::string> axes;
    std::vector<char> areRotary; //!< the axes
    std::vector<double> joints;  //!< [length] or [rad]
    std::vector<std::int64_t> point;
    std::vector<std::int64_t> line;
    std::vector<double> asked;          //!< x, y, z, i, j, k
    std::vector<double> positionError;  //!< [length]
    std::vector<double> directionError; //!< [rad]
    std::vector<int> branch;
    std::vector<unsigned char> flags; //!< a bit for each of host::kRowFlagNames, the first lowest
    std::vector<host::Event> events;
    std::string warnings; //!< a line each
};

/// Plans as the program does, with a machine of its own. `mayGoOn` is asked now and then.
PlannedMotion PlanMotion(const host::MachineDescription& description, const host::Toolpath& path,
                         const host::SolveOptions& options, const std::function<void()>& mayGoOn);

} // namespace bindings

#endif
