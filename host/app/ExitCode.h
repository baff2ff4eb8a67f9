#ifndef TRUNNION_HOST_APP_EXIT_CODE_H
#define TRUNNION_HOST_APP_EXIT_CODE_H

namespace host
{

/// What the program returns to its caller.
enum ExitCode : int {
    kExitOk = 0,
    kExitPointsFailed = 1,
    kExitNotVerified = 1, //!< a joint table does not hold
    kExitBadInput = 2,    //!< input, usage, or a file that cannot be read or written
    kExitInterrupted = 130
};

/// What it says when that is why.
inline constexpr const char* kNotEnoughMemory =
    "trunnion: there is not enough memory; free some, or split the toolpath";

} // namespace host

#endif
