#include "app/CheckCommand.h"

#include <optional>

#include "app/MachineReport.h"
#include "app/PathReport.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"

namespace host
{

ExitCode Check(const CheckOptions& options, std::ostream& out, std::ostream& err)
{
    LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const LoadedStream* const only =
        options.machine.stream ? &machine.StreamWithId(options.machine.stream) : nullptr;
    const ShownUnits units{machine.length,
                           options.inRadians ? AngleUnit::Radian : AngleUnit::Degree};
    std::optional<Toolpath> path;
    if (!options.toolpath.file.empty()) {
        path = ReadPath(options.toolpath, machine.length, err);
    }
    MachineReport(machine, units, out).Print(only);
    if (path) {
        out << "\n";
        PathReport(*path, units, out)
            .Print(options.toolpath.format.value_or(ToolpathFormatOf(options.toolpath.file)));
    }
    return kExitOk;
}

} // namespace host
