#include "Mpirun.h"

#include <algorithm>
#include <cctype>
#include <system_error>

#include "Paths.h"

namespace test
{

namespace
{

namespace fs = std::filesystem;

} // namespace

std::vector<std::string> Started(int ranks, const std::vector<std::string>& arguments,
                                 int patience_s)
{
    std::vector<std::string> command;
    if (ranks > 0) {
        command = {"/usr/bin/env",
                   "OMPI_ALLOW_RUN_AS_ROOT=1",
                   "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1",
                   kMpirun,
                   "--quiet", // says nothing of its own about exit codes
                   "--oversubscribe",
                   "--mca",
                   "odls_base_sigkill_timeout",
                   std::to_string(patience_s),
                   "-n",
                   std::to_string(ranks)};
    }
    command.emplace_back(kProgram);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

std::vector<pid_t> RanksIn(const fs::path& folder)
{
    std::vector<pid_t> found;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        std::error_code ignored;
        const std::string name = entry.path().filename().string();
        if (std::all_of(name.begin(), name.end(), ::isdigit) &&
            fs::read_symlink(entry.path() / "cwd", ignored) == folder &&
            fs::read_symlink(entry.path() / "exe", ignored) == fs::path(kProgram)) {
            found.push_back(std::stoi(name));
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace test
