#ifndef TRUNNION_TESTS_HOST_PROCESS_H
#define TRUNNION_TESTS_HOST_PROCESS_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace test
{

/// What a program left on its way out.
struct Outcome
{
    int code{-1}; //!< exit code; 128 and the number of the signal that ended it
    std::string out;
    std::string err;
};

/// A running program, its output collected.
class Process
{
  public:
    enum class ErrorOutput { Pipe, ClosedPipe, Terminal };

    /// `arguments[0]` is the program; it runs in `folder`.
    Process(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
            ErrorOutput errorOutput = ErrorOutput::Pipe);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Waits until standard error has said `text`, or has ended without it (false).
    bool WaitForError(const std::string& text);
    /// Waits until something outside the program's output is so, or the program has ended (false).
    bool WaitUntil(const std::function<bool()>& isSo);
    void Send(int signal) const;
    Outcome Wait();

  private:
    /// Takes what comes next from the program, if it comes in time; false once both outputs have
    /// ended.
    bool Collect(int timeout_ms = -1);

    pid_t child{-1};
    int outEnd{-1};
    int errEnd{-1};
    Outcome outcome;
};

} // namespace test

#endif
