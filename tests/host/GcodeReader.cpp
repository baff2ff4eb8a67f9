#include "GcodeReader.h"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

namespace test
{

namespace
{

using Words = std::vector<std::pair<std::string, std::string>>;

[[noreturn]] void Stop(const std::string& line, const std::string& reason)
{
    throw std::runtime_error(reason + " in: " + line);
}

/// "X-1.5" or "J1=12."
Words WordsOf(const std::string& line)
{
    static const std::regex word(R"(([A-Za-z][A-Za-z0-9_]*=|[A-Z])([-+]?(?:\d+\.?\d*|\.\d+)))");
    static const std::regex blanks(" *");
    Words words;
    std::string rest = line;
    std::smatch match;
    while (std::regex_search(rest, match, word)) {
        if (!std::regex_match(match.prefix().str(), blanks)) {
            Stop(line, "no word");
        }
        words.emplace_back(match[1], match[2]);
        rest = match.suffix();
    }
    if (!std::regex_match(rest, blanks)) {
        Stop(line, "no word");
    }
    return words;
}

bool IsCoordinate(const std::string& address)
{
    return address.back() == '=' || std::string("ABCUVWXYZ").find(address) != std::string::npos;
}

bool IsLinear(const std::string& address)
{
    return std::string("UVWXYZ").find(address) != std::string::npos;
}

double DistanceBetween(const GcodeBlock& from, const GcodeBlock& to, bool linear)
{
    double sum = 0.0;
    for (const auto& [address, value] : to.place) {
        const auto before = from.place.find(address);
        if (IsLinear(address) == linear && before != from.place.end()) {
            sum += std::pow(value - before->second, 2);
        }
    }
    return std::sqrt(sum);
}

double DurationOf(const GcodeBlock& from, const GcodeBlock& to, bool hasFeed,
                  const std::string& line)
{
    if (to.feedMode == 0 || !(to.feed > 0.0)) {
        Stop(line, "G1 without a feed");
    }
    if (to.feedMode == 93) {
        if (!hasFeed) {
            Stop(line, "G93 without F");
        }
        return 1.0 / to.feed;
    }
    const double linear = DistanceBetween(from, to, true);
    return (linear > 0.0 ? linear : DistanceBetween(from, to, false)) / to.feed;
}

/// What a block holds until another says otherwise.
class Control
{
  public:
    std::optional<GcodeBlock> Take(const std::string& line)
    {
        const GcodeBlock before = state;
        bool moves = false;
        bool hasFeed = false;
        std::set<std::string> seen;
        for (const auto& [address, number] : WordsOf(line)) {
            if (address != "G" && !seen.insert(address).second) {
                Stop(line, "two words " + address);
            }
            if (address == "G") {
                TakeG(number);
            } else if (address == "F") {
                state.feed = std::strtod(number.c_str(), nullptr);
                hasFeed = true;
            } else if (IsCoordinate(address)) {
                state.place[address] = std::strtod(number.c_str(), nullptr);
                moves = true;
            }
        }
        if (!moves) {
            return std::nullopt;
        }
        if (!hasMotion) {
            Stop(line, "neither G0 nor G1");
        }
        state.duration = state.isRapid ? 0.0 : DurationOf(before, state, hasFeed, line);
        return state;
    }

  private:
    void TakeG(const std::string& number)
    {
        if (number == "0" || number == "1") {
            state.isRapid = number == "0";
            hasMotion = true;
        } else if (number == "93" || number == "94" || number == "95") {
            state.feedMode = std::atoi(number.c_str());
        } else if (number == "43.4" || number == "49") {
            state.isTcpOn = number == "43.4";
        }
    }

    GcodeBlock state;
    bool hasMotion{false};
};

} // namespace

std::vector<GcodeBlock> ReadGcode(const std::string& program)
{
    static const std::regex comment(R"(\([^()]*\)|;.*)");
    std::vector<GcodeBlock> blocks;
    Control control;
    std::istringstream in(program);
    for (std::string line; std::getline(in, line);) {
        if (line == "%") {
            continue;
        }
        if (const auto block = control.Take(std::regex_replace(line, comment, ""))) {
            blocks.push_back(*block);
        }
    }
    return blocks;
}

} // namespace test
