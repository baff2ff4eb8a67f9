#include "app/BatchArguments.h"

#include <algorithm>

#include "app/Arguments.h"
#include "app/SolveArguments.h"
#include "app/VerifyArguments.h"
#include "text/InputError.h"

namespace host
{

namespace
{

JobOptions ReadJob(const SolveOptions& usual, const std::vector<std::string>& words)
{
    CLI::App app;
    app.require_subcommand(1);
    SolveOptions solve = usual;
    VerifyOptions verify;
    AddSolve(app, solve);
    AddVerify(app, verify);
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend())); // as it wants them
    } catch (const CLI::Success&) {
        throw InputError("batch", "a job is no place to ask for help; trunnion " + words.at(0) +
                                      " --help prints it");
    } catch (const CLI::ParseError& error) {
        const std::string sentence = error.what();
        throw InputError("batch", sentence.substr(0, sentence.find('\n')));
    }
    if (app.got_subcommand("verify")) {
        return verify;
    }
    if (solve.resumes) {
        throw InputError("batch", "--resume is an option of the batch, not of its jobs; it goes on "
                                  "with those that were interrupted");
    }
    solve.command.insert(solve.command.end(), words.begin(), words.end());
    return solve;
}

} // namespace

void AddBatch(CLI::App& app, BatchOptions& options)
{
    CLI::App* const batch =
        app.add_subcommand("batch", "Do many runs, side by side where mpirun starts several ranks");
    batch
        ->add_option("FILE", options.file,
                     "One run a line: solve or verify and its arguments, quoted as in a shell; "
                     "lines from # on are skipped")
        ->required();
    batch->add_flag("--resume", options.resumes,
                    "Go on with a batch that was interrupted, or do again what was not done");
    batch->add_flag("--quiet", options.isQuiet, "No summaries and no progress");
    batch->footer(kExitCodes);
}

JobReader ReaderOfJobs(const SolveOptions& usual)
{
    return [usual](const std::vector<std::string>& words) { return ReadJob(usual, words); };
}

} // namespace host
