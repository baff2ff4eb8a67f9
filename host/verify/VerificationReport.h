#ifndef TRUNNION_HOST_VERIFY_VERIFICATION_REPORT_H
#define TRUNNION_HOST_VERIFY_VERIFICATION_REPORT_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// What can be wrong with a joint table.
enum class FindingKind : std::size_t {
    Failed,  //!< a point has no joint values
    Missing, //!< a point has no row
    Extra,   //!< a row stands where it belongs to no point
    Line,    //!< the row and the toolpath name different lines
    Rapid,   //!< the row and the toolpath do not agree on what is a rapid
    Limit,   //!< an axis is outside its limits
    Point,   //!< the tool is off the point
    Way,     //!< the tool strays from the straight way
    Back,    //!< the tool goes back on its way
    Turn,    //!< a rotary axis turns by more than half a turn at once
    Rewind,  //!< the tool is not pulled back, or does not come back, as it should
    Error    //!< the row's own errors are not those of its joint values
};

/// In the order of the kinds, as headings of a count.
constexpr std::array<std::string_view, 12> kFindingNames{"failed points",
                                                         "points without a row",
                                                         "rows out of place",
                                                         "wrong lines",
                                                         "wrong rapids",
                                                         "limits exceeded",
                                                         "rows off their point",
                                                         "rows that stray from the straight way",
                                                         "rows that go back",
                                                         "turns at once",
                                                         "rewinds that leave their line",
                                                         "rows whose errors are wrong"};

/// Something in a joint table that does not hold.
struct Finding
{
    FindingKind kind{FindingKind::Failed};
    int tableLine{0};     //!< 0 for what is missing at the end
    int pathLine{0};      //!< of the point that it is about
    std::string sentence; //!< without the place, capital or full stop
};

/// The largest of some values, and where it was met first.
struct Largest
{
    double value{0.0};
    int tableLine{0}; //!< 0 as long as there is no value
    int pathLine{0};

    void Raise(const Largest& other)
    {
        if (other.tableLine > 0 && (tableLine == 0 || other.value > value)) {
            *this = other;
        }
    }
};

/// What a joint table comes to.
struct VerificationReport
{
    std::size_t points{0}; //!< of the toolpath
    std::size_t rows{0};
    std::size_t inserted{0}; //!< rows
    std::size_t rewound{0};  //!< rows

    // Ways between points that are not held to the straight line.
    std::size_t rapids{0};
    std::size_t toolChanges{0};
    std::size_t interrupted{0}; //!< nothing is known of where the axes come from

    Largest pointPosition;      //!< [length]
    Largest pointDirection_deg; //!< of the tool
    Largest wayPosition;        //!< at inserted rows and between rows [length]
    Largest wayDirection_deg;

    std::array<std::size_t, kFindingNames.size()> findings{}; //!< how many of each kind

    std::size_t CountOf(FindingKind kind) const { return findings[static_cast<std::size_t>(kind)]; }
    bool Holds() const { return findings == decltype(findings){}; }

    /// @param behind what the rows behind come to, on the same toolpath
    void Add(const VerificationReport& behind);
};

/// What rows come to that stand together.
struct VerifiedRows
{
    VerificationReport report;
    std::vector<Finding> findings; //!< in their order; of each kind the first ones may be enough
};

} // namespace host

#endif
