#include "app/BatchReport.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <variant>

#include "text/Numbers.h"

namespace host
{

namespace
{

constexpr std::array kOutcomes{Outcome::Done,    Outcome::PointsFailed, Outcome::NotVerified,
                               Outcome::NotDone, Outcome::Interrupted,  Outcome::NotBegun};

const char* Words(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Done:
        return "done";
    case Outcome::PointsFailed:
        return "some points failed";
    case Outcome::NotVerified:
        return "does not hold";
    case Outcome::NotDone:
        return "not done";
    case Outcome::Interrupted:
        return "interrupted";
    case Outcome::NotBegun:
        return "not begun";
    }
    return "";
}

const char* CountedAs(Outcome outcome)
{
    switch (outcome) {
    case Outcome::PointsFailed:
        return "with failed points";
    case Outcome::NotVerified:
        return "that do not hold";
    default:
        return Words(outcome);
    }
}

void PrintCounts(const std::vector<Outcome>& outcomes, std::ostream& out)
{
    out << "jobs       " << outcomes.size();
    const char* before = ": ";
    for (const Outcome outcome : kOutcomes) {
        const auto count = std::count(outcomes.begin(), outcomes.end(), outcome);
        if (count > 0) {
            out << before << count << " " << CountedAs(outcome);
            before = ", ";
        }
    }
    out << "\n";
}

std::string FirstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

} // namespace

Outcome OutcomeOf(const BatchLine& line, const JobState& state)
{
    if (!state.result) {
        return state.isBegun ? Outcome::Interrupted : Outcome::NotBegun;
    }
    switch (state.result->code) {
    case kExitOk:
        return Outcome::Done;
    case kExitPointsFailed:
        return std::holds_alternative<VerifyOptions>(line.job) ? Outcome::NotVerified
                                                               : Outcome::PointsFailed;
    case kExitInterrupted:
        return Outcome::Interrupted;
    default:
        return Outcome::NotDone;
    }
}

ExitCode CodeOf(const std::vector<BatchLine>& lines, const std::vector<JobState>& states)
{
    const auto codeOf = [](const BatchLine& line, const JobState& state) {
        switch (OutcomeOf(line, state)) {
        case Outcome::Done:
            return kExitOk;
        case Outcome::PointsFailed:
        case Outcome::NotVerified:
            return kExitPointsFailed;
        case Outcome::NotDone:
            return kExitBadInput;
        default:
            return kExitInterrupted;
        }
    };
    ExitCode code = kExitOk; // the greater, the less is done
    for (std::size_t i = 0; i < lines.size(); ++i) {
        code = std::max(code, codeOf(lines[i], states[i]));
    }
    return code;
}

void PrintBatch(const std::string& file, const std::vector<BatchLine>& lines,
                const std::vector<JobState>& states, std::chrono::duration<double> time,
                std::ostream& out)
{
    std::vector<Outcome> outcomes;
    std::transform(lines.begin(), lines.end(), states.begin(), std::back_inserter(outcomes),
                   OutcomeOf);
    PrintCounts(outcomes, out);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        out << "           " << file << ":" << lines[i].number << ": " << Words(outcomes[i]);
        if (states[i].isOfEarlierRun) {
            out << " in an earlier run";
        } else if (states[i].result) {
            out << ", " << FixedText(states[i].result->seconds, 2) << " s";
        }
        if (states[i].result && !states[i].result->fault.empty()) {
            out << ": " << FirstLine(states[i].result->fault);
        }
        out << "\n";
    }
    out << "time       " << FixedText(time.count(), 2) << " s\n";
}

} // namespace host
