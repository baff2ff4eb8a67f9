// The trunnion program: joint values for toolpaths and poses, and poses for joint values.

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include "app/Arguments.h"
#include "app/BatchArguments.h"
#include "app/BatchCommand.h"
#include "app/BranchesCommand.h"
#include "app/BundledPage.h"
#include "app/CheckCommand.h"
#include "app/ExitCode.h"
#include "app/MachineOptions.h"
#include "app/PoseCommand.h"
#include "app/SolveArguments.h"
#include "app/SolveCommand.h"
#include "app/VerifyArguments.h"
#include "app/VerifyCommand.h"
#include "app/Version.h"
#include "app/ViewCommand.h"
#include "ranks/Ranks.h"

namespace
{

void AddCheck(CLI::App& app, host::CheckOptions& options)
{
    CLI::App* const check =
        app.add_subcommand("check", "Print what is understood of a machine and a toolpath");
    host::AddMachine(*check, options.machine);
    host::AddToolpath(*check, options.toolpath);
    check->add_flag("--radians", options.inRadians, "Angles in radians, not degrees");
    check->footer(host::kExitCodes);
}

void AddPose(CLI::App& app, host::PoseOptions& options)
{
    CLI::App* const pose =
        app.add_subcommand("pose", "Print where the tool stands for given axis values");
    host::AddMachine(*pose, options.machine);
    pose->add_option("VALUES", options.values,
                     "Axis values such as X=10 A=30 (degrees for rotary axes); axes not named "
                     "stand at their initial value")
        ->type_name("NAME=VALUE");
    pose->add_flag("--radians", options.inRadians, "Rotary axes in radians, not degrees");
    pose->footer(host::kExitCodes);
}

void AddBranches(CLI::App& app, host::BranchesOptions& options)
{
    constexpr int kPoseNumbers = 6;
    CLI::App* const branches =
        app.add_subcommand("branches", "List the distinct solutions at one pose");
    host::AddMachine(*branches, options.machine);
    branches
        ->add_option("POSE", options.pose,
                     "The tool's position and direction in part coordinates: x y z i j k")
        ->required()
        ->expected(kPoseNumbers)
        ->type_name("NUMBER");
    branches->add_flag("--radians", options.inRadians, "Rotary axes in radians, not degrees");
    branches->add_flag("--ignore-limits", options.ignoresLimits,
                       "Also solutions beyond the limits; a ! marks the axes that are");
    branches->footer(host::kExitCodes);
}

void AddView(CLI::App& app, host::ViewOptions& options)
{
    CLI::App* const view =
        app.add_subcommand("view", "Write a page to look at a machine and move it");
    host::AddWholeMachine(*view, options.machine);
    view->add_option("-o,--output", options.output,
                     "The page to write, one HTML file with all in it; otherwise named after the "
                     "machine's file")
        ->type_name("FILE");
    view->footer(host::kExitCodes);
}

/// The leader alone speaks to the user.
void FallSilent()
{
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
}

/// And alone is asked to end early: it tells the others.
void LeaveSignalsToLeader()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_IGN);
    }
}

host::JobReader ReaderForBatch(host::SolveOptions usual, const char* program)
{
    usual.command = {program};
    return host::ReaderOfJobs(usual);
}

host::ExitCode RunCommand(int argc, char** argv, host::Ranks& ranks)
{
    CLI::App app("Inverse and forward kinematics of machine tools", "trunnion");
    app.set_version_flag("--version", std::string("trunnion ") + host::kVersion);
    app.require_subcommand(1);
    app.footer(host::kExitCodes);
    host::SolveOptions solve;
    solve.version = host::kVersion;
    solve.command.assign(argv, argv + argc);
    host::CheckOptions check;
    host::PoseOptions pose;
    host::BranchesOptions branches;
    host::VerifyOptions verify;
    host::ViewOptions view;
    view.version = host::kVersion;
    solve.page = view.page = host::BundledPage();
    host::BatchOptions batch;
    batch.version = host::kVersion;
    batch.read = ReaderForBatch(solve, argc > 0 ? argv[0] : "trunnion");
    host::AddSolve(app, solve);
    AddCheck(app, check);
    AddPose(app, pose);
    AddBranches(app, branches);
    host::AddVerify(app, verify);
    AddView(app, view);
    host::AddBatch(app, batch);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& answer) {
        return app.exit(answer) == 0 ? host::kExitOk : host::kExitBadInput;
    }
    if (app.got_subcommand("batch")) { // each rank has runs of its own to end
        return host::Batch(batch, ranks, std::cout, std::cerr);
    }
    if (!ranks.Leads()) {
        LeaveSignalsToLeader();
    }
    if (app.got_subcommand("solve")) {
        return host::SolveShared(solve, ranks, std::cout, std::cerr);
    }
    if (app.got_subcommand("verify")) {
        return host::VerifyShared(verify, ranks, std::cout, std::cerr);
    }
    if (!ranks.Leads()) {
        return host::kExitOk; // the other commands are a matter of moments
    }
    if (app.got_subcommand("check")) {
        return host::Check(check, std::cout, std::cerr);
    }
    if (app.got_subcommand("view")) {
        return host::View(view, std::cout);
    }
    return app.got_subcommand("pose") ? host::Pose(pose, std::cout, std::cerr)
                                      : host::ListBranches(branches, std::cout, std::cerr);
}

std::string SentenceOfRank(int rank, const std::string& sentence)
{
    return "trunnion: rank " + std::to_string(rank) + ": " + sentence + "\n";
}

/// Where the stream is silent, and in one piece among what others say.
void SayAtOnce(const std::string& text)
{
    // Whoever does not hear it still sees the run end.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

/// On a rank that does not lead. The leader waits for it: where it cannot go on, none can.
host::ExitCode Follow(int argc, char** argv, host::Ranks& ranks)
{
    FallSilent();
    const std::string noMemory =
        SentenceOfRank(ranks.Rank(), "there is not enough memory; free some, or start fewer ranks");
    try {
        return RunCommand(argc, argv, ranks);
    } catch (const std::bad_alloc&) {
        SayAtOnce(noMemory);
    } catch (const std::exception& error) {
        SayAtOnce(SentenceOfRank(ranks.Rank(), error.what()));
    }
    ranks.Abort(host::kExitBadInput);
    return host::kExitBadInput;
}

host::ExitCode Run(int argc, char** argv)
{
    const std::unique_ptr<host::Ranks> ranks = host::RanksOfLauncher();
    return ranks->Leads() ? RunCommand(argc, argv, *ranks) : Follow(argc, argv, *ranks);
}

/// What is said on a stream that the caller has closed must not get into a file that was opened
/// in its place. Reading only: what is written there fails as it did.
void HoldStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && ::open("/dev/null", O_RDONLY) != descriptor) {
            std::_Exit(host::kExitBadInput);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    // Neither a reader that goes away nor a limit on sizes ends the program while a file is half
    // written.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    HoldStandardDescriptors();
    try {
        const host::ExitCode code = Run(argc, argv);
        if (std::cout.rdbuf() != nullptr && !std::cout.flush()) {
            std::cerr << "trunnion: standard output cannot be written; check where it leads\n";
            return host::kExitBadInput;
        }
        return code;
    } catch (const std::bad_alloc&) {
        std::cerr << host::kNotEnoughMemory << "\n";
        return host::kExitBadInput;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return host::kExitBadInput;
    }
}
