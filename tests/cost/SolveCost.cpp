// What a whole run costs beside the solves in it:
//
//   solve_cost MACHINE TOOLPATH [MOST]
//
// Times `trunnion solve` from reading to writing and, in the same process, twice as many warm
// solves by the library's solver object as the path has points. Prints both as a row of a table;
// fails when the run takes more than MOST times as long as the solves.

#include <chrono>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>

#include <unistd.h>

#include "app/SolveCommand.h"
#include "solve/PointSolver.h"
#include "text/Numbers.h"
#include "toolpath/ToolpathFile.h"

namespace
{

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A folder that goes away with this object.
class Scratch
{
  public:
    Scratch() : folder(fs::temp_directory_path() / ("trunnion-cost-" + std::to_string(::getpid())))
    {
        fs::create_directories(folder);
    }
    ~Scratch()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    fs::path File(const std::string& name) const { return folder / name; }

  private:
    fs::path folder;
};

double SecondsOfRun(const fs::path& machine, const fs::path& toolpath)
{
    const Scratch scratch;
    host::SolveOptions options;
    options.machine.file = machine;
    options.toolpath.file = toolpath;
    options.output = scratch.File("joints.csv");
    std::ostringstream out;
    std::ostringstream err;
    const Clock::time_point start = Clock::now();
    if (host::Solve(options, out, err) != host::kExitOk) {
        throw std::runtime_error("the run failed: " + err.str());
    }
    return SecondsSince(start);
}

/// Each from the joints of the one before; twice over the path.
double SecondsOfSolves(const host::LoadedMachine& machine, const host::LoadedStream& stream,
                       const host::Toolpath& path)
{
    host::PointSolver solver(machine, stream, {});
    host::JointValues joints = solver.Initial();
    std::size_t failed = 0;
    const Clock::time_point start = Clock::now();
    for (int round = 0; round < 2; ++round) {
        for (const host::ToolPoint& point : path.points) {
            failed += solver.Solve({{point.position, point.direction}, std::nullopt},
                                   IkJoint::JtLimitNone, joints)
                          ? 0U
                          : 1U;
        }
    }
    const double seconds = SecondsSince(start);
    if (failed > 0) {
        throw std::runtime_error(std::to_string(failed) + " of the solves failed");
    }
    return seconds;
}

int Measure(const fs::path& machineFile, const fs::path& pathFile, double most)
{
    host::LoadedMachine machine = host::LoadMachine(machineFile);
    const host::LoadedStream& stream = machine.StreamWithId(std::nullopt);
    const host::Toolpath path = host::ReadToolpath(pathFile, std::nullopt, machine.length);
    const double run = SecondsOfRun(machineFile, pathFile);
    const double solves = SecondsOfSolves(machine, stream, path);
    std::cout << "points  " << path.points.size() << "\n"
              << "time    " << host::FixedText(run, 2) << " s the whole run, "
              << host::FixedText(solves, 2) << " s as many warm solves twice over, ratio "
              << host::FixedText(run / solves, 2) << "\n";
    return run <= most * solves ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    constexpr double kMost = 3.0;
    try {
        if (argc != 3 && argc != 4) {
            throw std::runtime_error("solve_cost: give MACHINE TOOLPATH [MOST]");
        }
        const double most = argc == 4 ? host::ParseNumber(argv[3]).value_or(kMost) : kMost;
        return Measure(argv[1], argv[2], most);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 2;
    }
}
