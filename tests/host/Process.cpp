#include "Process.h"

#include <array>
#include <stdexcept>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test
{

namespace
{

struct Ends
{
    int reading;
    int writing;
};

Ends OpenPipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return {ends[0], ends[1]};
}

Ends OpenTerminal()
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        throw std::runtime_error("no terminal");
    }
    const int slave = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave < 0) {
        throw std::runtime_error("no terminal");
    }
    return {master, slave};
}

/// Appends what can be read; closes the end when there will be no more. A terminal ends with an
/// error once its other side is closed.
void Drain(int& end, std::string& text)
{
    std::array<char, 4096> block{};
    const ssize_t count = ::read(end, block.data(), block.size());
    if (count > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
    } else {
        ::close(end);
        end = -1;
    }
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
                 ErrorOutput errorOutput)
{
    const Ends out = OpenPipe();
    Ends err = errorOutput == ErrorOutput::Terminal ? OpenTerminal() : OpenPipe();
    if (errorOutput == ErrorOutput::ClosedPipe) {
        ::close(err.reading);
        err.reading = -1;
    }
    std::vector<char*> words;
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);

    child = ::fork();
    if (child == 0) {
        ::dup2(out.writing, STDOUT_FILENO);
        ::dup2(err.writing, STDERR_FILENO);
        if (::chdir(folder.c_str()) == 0) {
            ::execv(words[0], words.data());
        }
        ::_exit(127);
    }
    ::close(out.writing);
    ::close(err.writing);
    outEnd = out.reading;
    errEnd = err.reading;
    if (child < 0) {
        throw std::runtime_error("no process");
    }
}

Process::~Process()
{
    if (child > 0) {
        ::kill(child, SIGKILL);
        Wait();
    }
}

bool Process::WaitForError(const std::string& text)
{
    while (outcome.err.find(text) == std::string::npos) {
        if (errEnd < 0 || !Collect()) {
            return false;
        }
    }
    return true;
}

bool Process::WaitUntil(const std::function<bool()>& isSo)
{
    constexpr int kPause_ms = 1;
    while (!isSo()) {
        if (!Collect(kPause_ms)) {
            return false;
        }
    }
    return true;
}

void Process::Send(int signal) const
{
    ::kill(child, signal);
}

Outcome Process::Wait()
{
    while (Collect()) {
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    child = -1;
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

bool Process::Collect(int timeout_ms)
{
    std::array<pollfd, 2> ends{{{outEnd, POLLIN, 0}, {errEnd, POLLIN, 0}}}; // -1 is skipped
    if (outEnd < 0 && errEnd < 0) {
        return false;
    }
    if (::poll(ends.data(), ends.size(), timeout_ms) > 0) {
        if (ends[0].revents != 0) {
            Drain(outEnd, outcome.out);
        }
        if (ends[1].revents != 0) {
            Drain(errEnd, outcome.err);
        }
    }
    return true;
}

} // namespace test
