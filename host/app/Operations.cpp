#include "app/Operations.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>

#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

Assignment SplitAssignment(const std::string& option, const std::string& text)
{
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        throw InputError(option, Quoted(text) + " is no assignment; write NAME=VALUE");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::vector<const LoadedStream*> StreamsOf(const StreamChoice& choice, LoadedMachine& machine,
                                           const Toolpath& path)
{
    std::map<std::string, const LoadedStream*> own;
    for (const std::string& text : choice.ofOperations) {
        const Assignment assignment = SplitAssignment("--operation-stream", text);
        const auto id = ParseNumber(assignment.value);
        const bool isKnown = std::any_of(
            path.operations.begin(), path.operations.end(),
            [&](const Operation& operation) { return operation.name == assignment.name; });
        if (!isKnown) {
            throw InputError("--operation-stream", "there is no operation " +
                                                       Quoted(assignment.name) + " in " +
                                                       path.file + "; see trunnion check");
        }
        if (!id || *id != std::trunc(*id) || std::fabs(*id) > INT32_MAX) {
            throw InputError("--operation-stream",
                             Quoted(assignment.value) + " is no stream id; write NAME=ID");
        }
        own[assignment.name] = &machine.StreamWithId(static_cast<int>(*id));
    }
    const LoadedStream& usual = machine.StreamWithId(choice.usual);
    std::vector<const LoadedStream*> streams;
    for (const Operation& operation : path.operations) {
        const auto found = own.find(operation.name);
        streams.push_back(found == own.end() ? &usual : found->second);
    }
    return streams;
}

std::vector<double> ToolLengthsOf(const std::optional<double>& ofUser, const Toolpath& path)
{
    if (ofUser && (!(*ofUser >= 0.0) || !std::isfinite(*ofUser))) {
        throw InputError("--tool-length", RoundedText(*ofUser) + " is below 0; correct it");
    }
    std::vector<double> lengths;
    for (const Operation& operation : path.operations) {
        lengths.push_back(ofUser.value_or(operation.toolLength.value_or(0.0)));
    }
    return lengths;
}

} // namespace host
