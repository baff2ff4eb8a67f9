#include "app/Arguments.h"

namespace host
{

void AddMachine(CLI::App& command, MachineOptions& machine)
{
    AddWholeMachine(command, machine);
    command.add_option("--stream", machine.stream, "The stream to look at; otherwise the first")
        ->type_name("ID");
}

void AddWholeMachine(CLI::App& command, MachineOptions& machine)
{
    command.add_option("MACHINE", machine.file, "The machine, a TOML file or a URDF")->required();
    command
        .add_option("--tool-link", machine.links.tool,
                    "URDF only: the link that stands for the tool; its z axis points from the "
                    "tool's end to its shank")
        ->type_name("LINK");
    command
        .add_option("--part-link", machine.links.part,
                    "URDF only: the link whose frame the toolpath is given in")
        ->type_name("LINK");
}

CLI::Option* AddToolpath(CLI::App& command, PathOptions& path)
{
    command
        .add_option_function<std::string>(
            "--format",
            [&path](const std::string& name) {
                path.format = FindToolpathFormat(name);
                if (!path.format) {
                    throw CLI::ValidationError("--format", name + " is none of apt, csv, nc");
                }
            },
            "The toolpath's format, apt, csv or nc; otherwise as its name says")
        ->type_name("NAME");
    return command.add_option(
        "TOOLPATH", path.file,
        "The toolpath: cutter locations (APT), a table (CSV) or an NC program "
        "with tool vectors");
}

} // namespace host
