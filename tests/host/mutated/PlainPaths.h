#ifndef TRUNNION_TESTS_HOST_MUTATED_PLAIN_PATHS_H
#define TRUNNION_TESTS_HOST_MUTATED_PLAIN_PATHS_H

#include <array>
#include <optional>
#include <string>
#include <vector>

// Toolpath texts read the plain way, in millimetres: for texts that the readers have accepted, to
// hold their points against.
namespace test
{

struct PlainMove
{
    int line{0};
    std::array<double, 3> position{};
    std::array<double, 3> direction{};
    bool isRapid{false};
    bool isKnown{true}; //!< all of the position was given
    std::optional<double> feed;
    bool isFeedFollowed{true}; //!< otherwise the file says no more than how long it takes
    std::string operation;     //!< its name
    std::optional<int> tool;   //!< its number
    std::optional<double> toolLength;
};

std::vector<PlainMove> PlainApt(const std::string& text);
std::vector<PlainMove> PlainCsv(const std::string& text);
/// With those moves on which not all of the position is known.
std::vector<PlainMove> PlainNc(const std::string& text);

} // namespace test

#endif
