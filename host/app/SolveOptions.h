#ifndef TRUNNION_HOST_APP_SOLVE_OPTIONS_H
#define TRUNNION_HOST_APP_SOLVE_OPTIONS_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/MachineOptions.h"
#include "app/PageHtml.h"
#include "app/PathOptions.h"
#include "motion/Tolerances.h"
#include "planner/PlanOptions.h"
#include "solve/PointSolver.h"

namespace host
{

/// What the user asks of a run, in the units of the command line; the defaults are those of the
/// program.
struct SolveOptions
{
    MachineOptions machine;
    PathOptions toolpath;
    std::filesystem::path output;
    std::optional<std::filesystem::path> gcode; //!< nothing: no G-code is written
    std::string dialect{"inverse-time"};        //!< of the G-code: a bundled one or a file
    std::vector<std::string> operationStreams;  //!< "NAME=ID": the stream of single operations
    std::optional<double> toolLength;           //!< nothing: the operations' own [length]
    std::vector<std::string> locks;             //!< "B=30": axes that stay where they are put

    double tolerance{SolverSettings{}.tolerance};
    int maxIterations{SolverSettings{}.maxIterations};
    std::optional<double> linearTolerance; //!< nothing: the machine unit's default [length]
    double angleTolerance_deg{Tolerances{}.angle_deg};
    bool pointsOnly{false};

    double poleCone_deg{2.0};
    std::string start{"home"}; //!< or "free"
    std::string prefer;        //!< "A+" or "A-"; empty for no preference
    CostWeights weights;
    std::string rewind{"rapids"};       //!< or "retract"
    std::string branchChange{"rapids"}; //!< or "retract"
    std::optional<double> retract;      //!< nothing: 50 mm or 2 inches [length]

    std::optional<std::filesystem::path> summary; //!< nothing: no JSON is written
    std::optional<std::filesystem::path> report;  //!< nothing: no page is written
    BuiltPage page;                               //!< of reports
    std::string version;                          //!< of the program, for summary and report
    std::vector<std::string> command;             //!< the program's arguments, likewise

    std::string toolRoll{"fixed"}; //!< or "feed", "search", "open": where a stream leaves it open
    std::vector<double> rollReference{1.0, 0.0, 0.0}; //!< part coordinates

    bool resumes{false};
    bool inRadians{false};
    bool isQuiet{false};
};

} // namespace host

#endif
