#include "toolpath/AptWords.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <map>
#include <set>
#include <string_view>

#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

using Words = std::set<std::string, std::less<>>;

/// Inert with these as the only argument, or as the first where `mayGoOn`.
struct InertForm
{
    Words first;
    bool mayGoOn{false};
};

/// Words whose other forms move the tool, change its path or what coordinates mean.
const std::map<std::string, InertForm, std::less<>>& InertForms()
{
    static const std::map<std::string, InertForm, std::less<>> forms{{"CUTCOM", {{"OFF"}}},
                                                                     {"CYCLE", {{"OFF", "NOMORE"}}},
                                                                     {"SELECT", {{"TOOL"}, true}},
                                                                     {"TRACUT", {{"NOMORE"}}}};
    return forms;
}

/// Words that shift the coordinates by their numbers: with zeros by nothing.
bool IsShift(const std::string& word)
{
    return word == "ORIGIN" || word == "TRANS";
}

bool ShiftsByNothing(const AptStatement& statement)
{
    const auto isZero = [](const AptStatement::Argument& argument) {
        return ParseNumber(argument.text) == 0.0;
    };
    return statement.arguments.size() == 3 &&
           std::all_of(statement.arguments.begin(), statement.arguments.end(), isZero);
}

bool HasInertForm(const AptStatement& statement)
{
    const auto form = InertForms().find(statement.word);
    if (form == InertForms().end() || statement.arguments.empty()) {
        return false;
    }
    const InertForm& inert = form->second;
    return inert.first.find(statement.arguments[0].text) != inert.first.end() &&
           (inert.mayGoOn || statement.arguments.size() == 1);
}

std::string Listed(const std::string& word, const Words& arguments)
{
    std::string list;
    for (const std::string& argument : arguments) {
        list.append(list.empty() ? "" : " or ").append(word).append("/").append(argument);
    }
    return list;
}

} // namespace

bool IsAptText(const AptStatement& statement)
{
    static const Words words{"PARTNO", "PPRINT", "REMARK", "TITLE", "TPRINT"};
    const std::string_view word = statement.word;
    return words.find(word.substr(0, word.find(' '))) != words.end();
}

bool IsAptInert(const AptStatement& statement)
{
    // The spindle, the coolant, waiting and what else the control is told besides moving; drawing;
    // the tolerances with which the points were made; what the tool looks like.
    static const Words words{"AUXFUN",  "COOLNT", "CUTTER", "DELAY",  "END",    "INTOL",  "LEADER",
                             "LINTOL",  "MACHIN", "MCHTOL", "OPNAME", "OPSTOP", "OUTTOL", "PAINT",
                             "SELECTL", "SEQNO",  "SPINDL", "STOP",   "TOLER"};
    return words.find(statement.word) != words.end() || IsAptText(statement) ||
           HasInertForm(statement) || (IsShift(statement.word) && ShiftsByNothing(statement));
}

std::string WhyAptRefused(const AptStatement& statement)
{
    if (statement.word.empty()) {
        return "a statement begins with a word, as in GOTO/x,y,z; add it";
    }
    if (IsShift(statement.word)) {
        return statement.word + " shifts the coordinates, which is not understood; have the "
                                "points written in part coordinates, or shift them by MSYS";
    }
    const auto form = InertForms().find(statement.word);
    if (form != InertForms().end()) {
        return "only " + Listed(form->first, form->second.first) +
               " is understood, other forms may change the tool's way; have the points written "
               "as GOTO";
    }
    return Quoted(statement.word) + " is not understood, and it may move the tool; have the "
                                    "points written as GOTO, or take it out if it moves nothing";
}

const AptFeedUnit* FindAptFeedUnit(const std::string& word)
{
    static const std::map<std::string, AptFeedUnit, std::less<>> units{
        {"MMPM", {LengthUnit::Millimetre, FeedPer::Minute}},
        {"MMPR", {LengthUnit::Millimetre, FeedPer::Revolution}},
        {"IPM", {LengthUnit::Inch, FeedPer::Minute}},
        {"IPR", {LengthUnit::Inch, FeedPer::Revolution}},
        {"PERMIN", {std::nullopt, FeedPer::Minute}},
        {"PERREV", {std::nullopt, FeedPer::Revolution}}};
    const auto found = units.find(word);
    return found == units.end() ? nullptr : &found->second;
}

} // namespace host
