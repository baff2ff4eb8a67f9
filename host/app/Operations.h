#ifndef TRUNNION_HOST_APP_OPERATIONS_H
#define TRUNNION_HOST_APP_OPERATIONS_H

#include <optional>
#include <string>
#include <vector>

#include "machine/LoadedMachine.h"
#include "toolpath/Toolpath.h"

// What the command line says about single operations of a path.
namespace host
{

/// What stands before and behind the last "=" of an assignment.
struct Assignment
{
    std::string name;
    std::string value;
};

/// Throws InputError, naming the option, for what is none.
Assignment SplitAssignment(const std::string& option, const std::string& text);

struct StreamChoice
{
    std::optional<int> usual;              //!< nothing: the machine's first
    std::vector<std::string> ofOperations; //!< "NAME=ID"
};

/// The stream of each operation: its own where the user gives one, otherwise the usual one.
std::vector<const LoadedStream*> StreamsOf(const StreamChoice& choice, LoadedMachine& machine,
                                           const Toolpath& path);

/// The tool's length in each operation: that of the path, or 0, where the user gives none [length].
std::vector<double> ToolLengthsOf(const std::optional<double>& ofUser, const Toolpath& path);

} // namespace host

#endif
