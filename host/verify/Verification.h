#ifndef TRUNNION_HOST_VERIFY_VERIFICATION_H
#define TRUNNION_HOST_VERIFY_VERIFICATION_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "geometry/CutterLocation.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "motion/Tolerances.h"
#include "table/TableRow.h"
#include "toolpath/PathWindow.h"
#include "toolpath/Toolpath.h"
#include "verify/TableOrder.h"
#include "verify/ToolKinematics.h"
#include "verify/VerificationReport.h"

namespace host
{

/// How rows are verified. Machine and operations outlive the verification.
struct VerificationRequest
{
    const LoadedMachine& machine;
    const std::vector<Operation>& operations;
    std::vector<SeatedTool> tools; //!< of each operation
    Tolerances tolerances;
    int samples; //!< places looked at between two rows

    /// The axes of all streams that have an operation, in the machine's order: those of the rows.
    std::vector<const Axis*> Axes() const;
};

/// Checks the rows of a joint table against the toolpath that it was made for, by nothing but
/// forward kinematics and the machine's limits.
///
/// Every point has its row, in order and within the tolerances. On the way to a point that is not a
/// rapid the axes move evenly from row to row, and all the time the tool is within the tolerances
/// of the straight line and does not go back. A rewind begins and ends where the tool stands; it
/// pulls the tool out along its direction, and while the tool is out the axes may move as they
/// like.
class Verification
{
  public:
    /// @param ofPath the points of the rows, and for each of them the one before
    /// @param ofAxes where the tools of the request's axes stand
    Verification(const VerificationRequest& ofUser, const PathWindow& ofPath,
                 ToolKinematics& ofAxes, FindingTaker toFindings);
    Verification(const Verification&) = delete;
    Verification& operator=(const Verification&) = delete;

    /// As though the rows up to this one had been taken, of which nothing is left open.
    void GoOnBehind(const TableRow& row);
    /// As though these rows had been taken, the last of which has left nothing open.
    void TakeVerified(const VerifiedRows& rows, const TableRow& last);
    /// Whether what follows depends on the rows up to here by nothing but the last of them: it was
    /// that of its point, reached or failed.
    bool HasNothingOpen() const { return hasNothingOpen; }

    /// Rows come in the order of the table.
    void Take(const TableRow& row);
    /// Behind the last row.
    void Finish();
    const VerificationReport& Report() const { return report; }

  private:
    /// Of a place of the tool, and whether that is the row's own.
    using DeviationAt = std::function<Deviation(const CutterLocation& tool, bool isRow)>;

    /// Where the axes stood at the row before.
    struct Stand
    {
        std::vector<double> joints;
        PoseError error; //!< as the row gives it
        SeatedTool tool;
    };
    enum class WayKind { Straight, Rapid, ToolChange, Interrupted, First };
    /// To a point, from the one before it.
    struct Way
    {
        std::size_t point;
        WayKind kind;
        CutterLocation from;
        CutterLocation to;
        Deviation farthest; //!< from the beginning that the tool has come
        bool hasGoneBack;
    };
    /// The tool is out, or on its way out or back.
    struct Pull
    {
        CutterLocation foot; //!< where it was pulled away
        PoseError error;     //!< of the row at the foot, as that gives it
        CutterLocation tool; //!< where it stands now
        bool isOut;
        TableRow last;
    };

    void TakeOnWay(const TableRow& row, RowRole role);
    void BeginWay(std::size_t point);
    WayKind KindOfWay(std::size_t point) const;
    void CountWay();
    void FollowWay(const TableRow& row, RowRole role);
    void CheckProgress(const TableRow& row, const CutterLocation& tool);
    void CheckPoint(const TableRow& row, const CutterLocation& tool);
    void CheckInserted(const TableRow& row, const CutterLocation& tool);

    void TakeRewind(const TableRow& row);
    void FollowPull(const TableRow& row);
    void CheckPulledErrors(const TableRow& row, const CutterLocation& tool);
    void EndPull();
    double OutOf(const CutterLocation& tool) const;
    Deviation DeviationFromPull(const CutterLocation& tool) const;

    void CheckLimits(const TableRow& row);
    void CheckTurns(const TableRow& row);
    /// The worst deviation while the axes move from the row before to this one.
    Deviation WorstOnTheWay(const TableRow& row, const DeviationAt& deviationAt);
    void StandAt(const TableRow& row);
    void Interrupt();

    const SeatedTool& ToolOf(std::size_t point) const;
    CutterLocation LocationAt(std::size_t point) const;
    double Worst(const Deviation& deviation) const;
    std::string Text(const Deviation& deviation) const;
    void FindWrongError(const TableRow& row, const Deviation& deviation);
    void Find(FindingKind kind, const TableRow& row, const std::string& sentence);
    void Add(const Finding& finding);

    const VerificationRequest& request;
    PathWindow path;
    Deviation tolerance;
    FindingTaker takeFinding;
    ShownUnits units;
    ToolKinematics& kinematics;
    const std::vector<const Axis*>& axes;
    VerificationReport report;
    TableOrder order;
    bool hasNothingOpen{true};

    std::optional<Stand> stand; // nothing where it is not known
    std::optional<Way> way;     // to the point that is under way, or was taken last
    std::optional<Pull> pull;
};

} // namespace host

#endif
