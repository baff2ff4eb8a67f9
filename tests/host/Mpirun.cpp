#include "Mpirun.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <system_error>

#include "Paths.h"

namespace test
{

namespace
{

namespace fs = std::filesystem;

std::vector<std::string> Launcher(int patience_s)
{
    return {"/usr/bin/env",
            "OMPI_ALLOW_RUN_AS_ROOT=1",
            "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1",
            kMpirun,
            "--quiet", // says nothing of its own about exit codes
            "--oversubscribe",
            "--mca",
            "odls_base_sigkill_timeout",
            std::to_string(patience_s)};
}

/// Which rank the launcher has called a process; nothing where it is none, or gone.
std::optional<int> RankOf(const fs::path& process)
{
    const std::string variable = "OMPI_COMM_WORLD_RANK=";
    std::ifstream in(process / "environ");
    for (std::string entry; std::getline(in, entry, '\0');) {
        if (entry.compare(0, variable.size(), variable) == 0) {
            return std::stoi(entry.substr(variable.size()));
        }
    }
    return std::nullopt;
}

} // namespace

std::vector<std::string> Started(int ranks, const std::vector<std::string>& arguments,
                                 int patience_s)
{
    std::vector<std::string> command;
    if (ranks > 0) {
        command = Launcher(patience_s);
        command.insert(command.end(), {"-n", std::to_string(ranks)});
    }
    command.emplace_back(kProgram);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

std::vector<std::string> StartedApart(const std::vector<std::vector<std::string>>& commands,
                                      int patience_s)
{
    std::vector<std::string> all = Launcher(patience_s);
    for (const std::vector<std::string>& command : commands) {
        all.insert(all.end(), {"-n", "1"});
        all.insert(all.end(), command.begin(), command.end());
        all.emplace_back(":");
    }
    all.pop_back();
    return all;
}

std::vector<pid_t> RanksIn(const fs::path& folder)
{
    std::map<int, pid_t> found;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        std::error_code ignored;
        const std::string name = entry.path().filename().string();
        if (std::all_of(name.begin(), name.end(), ::isdigit) &&
            fs::read_symlink(entry.path() / "cwd", ignored) == folder &&
            fs::read_symlink(entry.path() / "exe", ignored) == fs::path(kProgram)) {
            if (const std::optional<int> rank = RankOf(entry.path())) {
                found[*rank] = std::stoi(name);
            }
        }
    }
    std::vector<pid_t> processes;
    std::transform(found.begin(), found.end(), std::back_inserter(processes),
                   [](const auto& process) { return process.second; });
    return processes;
}

} // namespace test
