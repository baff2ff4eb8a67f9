#ifndef TRUNNION_TESTS_HOST_MPIRUN_H
#define TRUNNION_TESTS_HOST_MPIRUN_H

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

// The program as several processes.
namespace test
{

/// `arguments` of the program, started as so many processes; as one without mpirun for none.
/// @param patience_s how long the launcher waits before it kills what it has asked to end
std::vector<std::string> Started(int ranks, const std::vector<std::string>& arguments,
                                 int patience_s = 1);

/// Each rank with a command of its own.
std::vector<std::string> StartedApart(const std::vector<std::vector<std::string>>& commands,
                                      int patience_s = 1);

/// The processes that mpirun has started in a folder, by rank.
std::vector<pid_t> RanksIn(const std::filesystem::path& folder);

} // namespace test

#endif
