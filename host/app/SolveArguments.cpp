#include "app/SolveArguments.h"

#include "app/Arguments.h"

namespace host
{

namespace
{

void AddPlanning(CLI::App& solve, SolveOptions& options)
{
    solve
        .add_option("--tolerance", options.tolerance,
                    "Where a solve has converged: squared lengths plus squared degrees")
        ->capture_default_str();
    solve.add_option("--max-iterations", options.maxIterations, "Passes of one solve")
        ->capture_default_str();
    solve
        .add_option("--linear-tol", options.linearTolerance,
                    "How far the tool's end may stray from the straight way between two points; "
                    "otherwise 0.01 mm or 0.0005 inch")
        ->type_name("LENGTH");
    solve.add_option("--angle-tol", options.angleTolerance_deg, "How far its direction may")
        ->capture_default_str()
        ->type_name("DEG");
    solve.add_flag("--points-only", options.pointsOnly,
                   "One row for each point, none between them");
    solve
        .add_option("--pole-cone", options.poleCone_deg,
                    "How near the pole a rotary axis that is nearly free turns by small steps")
        ->capture_default_str()
        ->type_name("DEG");
    solve
        .add_option("--start", options.start,
                    "home: the travel from the axes' initial values counts; free: it does not")
        ->capture_default_str();
    solve
        .add_option("--prefer", options.prefer,
                    "The side of zero on which an axis should stand, as in A-")
        ->type_name("AXIS+|-");
    solve
        .add_option("--weight-travel", options.weights.travel,
                    "What a radian of rotary travel costs")
        ->capture_default_str();
    solve
        .add_option("--weight-limits", options.weights.limits,
                    "What a point costs with an axis at a limit; nothing from 5 % of its range on")
        ->capture_default_str();
    solve
        .add_option("--weight-pole", options.weights.pole,
                    "What a radian costs on top that the free axis turns in the pole cone")
        ->capture_default_str();
    solve
        .add_option("--weight-preference", options.weights.preference,
                    "What a point costs on the side that is not preferred")
        ->capture_default_str();
    solve
        .add_option("--rewind", options.rewind,
                    "Where an axis that runs out is turned back: at rapids only, or with the tool "
                    "retracted")
        ->capture_default_str();
    solve
        .add_option("--branch-change", options.branchChange,
                    "Where the axes may swing to another branch: at rapids only, or with the tool "
                    "retracted")
        ->capture_default_str();
    solve
        .add_option("--retract", options.retract,
                    "How far the tool is retracted for that; otherwise 50 mm or 2 inch")
        ->type_name("LENGTH");
}

} // namespace

void AddSolve(CLI::App& app, SolveOptions& options)
{
    CLI::App* const solve =
        app.add_subcommand("solve", "Find the motion of the axes along a toolpath");
    AddMachine(*solve, options.machine);
    AddToolpath(*solve, options.toolpath)->required();
    solve->add_option("-o,--output", options.output, "The joint table to write (CSV)")
        ->required()
        ->type_name("JOINTS.csv");
    solve->add_option("--operation-stream", options.operationStreams, "The stream of one operation")
        ->type_name("NAME=ID");
    solve
        ->add_option("--tool-length", options.toolLength,
                     "From the tool's seat to its end; otherwise as the toolpath says")
        ->type_name("LENGTH");
    solve->add_option("--lock", options.locks, "An axis that stays where it is put, as in B=30")
        ->type_name("NAME=VALUE");
    solve->add_option("--gcode", options.gcode, "Also write a program for the control")
        ->type_name("FILE");
    solve
        ->add_option("--dialect", options.dialect,
                     "How the control wants it: inverse-time, per-minute, tcp, or a file")
        ->capture_default_str()
        ->type_name("NAME|FILE");
    solve->add_option("--summary", options.summary, "Also write what came of it (JSON)")
        ->type_name("FILE");
    solve
        ->add_option("--report", options.report,
                     "Also write a page to look at it in a browser: one HTML file with all in it")
        ->type_name("FILE");
    AddPlanning(*solve, options);
    solve
        ->add_option("--tool-roll", options.toolRoll,
                     "Where six or more axes leave the turn about the tool open, its x axis goes: "
                     "fixed, towards a reference; feed, along the feed; search, from the reference "
                     "by what each run reaches best; open: where the solver leaves it")
        ->capture_default_str();
    constexpr int kCoordinates = 3;
    solve
        ->add_option("--tool-roll-reference", options.rollReference,
                     "That reference in part coordinates: x,y,z")
        ->delimiter(',')
        ->expected(kCoordinates)
        ->capture_default_str();
    solve->add_flag("--resume", options.resumes, "Go on where the same command was interrupted");
    solve->add_flag("--radians", options.inRadians, "Rotary joints in radians, not degrees");
    solve->add_flag("--quiet", options.isQuiet, "No summary and no progress");
    solve->footer(kExitCodes);
}

} // namespace host
