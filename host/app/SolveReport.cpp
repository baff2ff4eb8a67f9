#include "app/SolveReport.h"

#include <algorithm>

namespace host
{

namespace
{

std::string WithUnit(const char* name, LengthUnit unit)
{
    return std::string(name) + "_" + std::string(Symbol(unit));
}

std::vector<ReportedOption> OptionsOf(const SolveOptions& options, const PlanRequest& request)
{
    const LengthUnit unit = request.machine.length;
    const PlanOptions& plan = request.options;
    std::vector<ReportedOption> reported{
        {"tolerance", request.settings.tolerance},
        {"max_iterations", request.settings.maxIterations},
        {WithUnit("linear_tol", unit), plan.tolerances.linear},
        {"angle_tol_deg", plan.tolerances.angle_deg},
        {"points_only", options.pointsOnly},
        {"pole_cone_deg", options.poleCone_deg},
        {"start", options.start},
        {"tool_roll", options.toolRoll},
        {"prefer", options.prefer},
        {"weight_travel", plan.weights.travel},
        {"weight_limits", plan.weights.limits},
        {"weight_pole", plan.weights.pole},
        {"weight_preference", plan.weights.preference},
        {"rewind", options.rewind},
        {"branch_change", options.branchChange},
        {WithUnit("retract", unit), plan.retract},
    };
    for (std::size_t i = 0; i < request.toolLengths.size(); ++i) {
        reported.push_back(
            {WithUnit("tool_length", unit) + "_" + std::to_string(i + 1), request.toolLengths[i]});
    }
    for (std::size_t i = 0; i < options.locks.size(); ++i) {
        reported.push_back({"lock_" + std::to_string(i + 1), options.locks[i]});
    }
    if (options.gcode) {
        reported.push_back({"dialect", options.dialect});
    }
    return reported;
}

/// Those that work on the path, each once.
std::vector<ReportedStream> StreamsOf(const PlanRequest& request)
{
    std::vector<ReportedStream> streams;
    for (const LoadedStream* stream : request.streams) {
        const bool isThere =
            std::any_of(streams.begin(), streams.end(),
                        [&](const ReportedStream& other) { return other.id == stream->id; });
        if (!isThere) {
            streams.push_back({stream->id, stream->tool, stream->part});
        }
    }
    return streams;
}

std::vector<ReportedOperation> OperationsOf(const PlanRequest& request)
{
    std::vector<ReportedOperation> reported;
    for (std::size_t i = 0; i < request.path.operations.size(); ++i) {
        const Operation& operation = request.path.operations[i];
        reported.push_back({operation.name, operation.line, operation.firstPoint,
                            request.streams[i]->id, operation.toolNumber, request.toolLengths[i]});
    }
    return reported;
}

} // namespace

RunReport ReportOf(const SolveOptions& options, const SourceDigests& sources,
                   const PlanRequest& request, const Summary& summary,
                   std::chrono::duration<double> time)
{
    RunReport report;
    report.version = options.version;
    report.command = options.command;
    report.machine = {options.machine.file.string(), sources.machine};
    report.machineName = request.machine.name;
    report.toolpath = {options.toolpath.file.string(), sources.toolpath};
    report.outputs.push_back({"joints", options.output.string()});
    if (options.gcode) {
        report.outputs.push_back({"gcode", options.gcode->string()});
    }
    if (options.report) {
        report.outputs.push_back({"report", options.report->string()});
    }
    report.streams = StreamsOf(request);
    report.operations = OperationsOf(request);
    report.options = OptionsOf(options, request);
    summary.FillIn(report);
    report.seconds = time.count();
    return report;
}

} // namespace host
