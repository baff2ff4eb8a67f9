#include "post/GcodeWriter.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "geometry/Units.h"
#include "geometry/Vec3.h"
#include "text/InputError.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

/// Sums up what moves, the rotary and the others apart.
class Way
{
  public:
    void Add(bool isRotary, double distance)
    {
        double& sum = isRotary ? rotary : linear;
        sum = std::hypot(sum, distance);
        largestTurn = isRotary ? std::max(largestTurn, std::fabs(distance)) : largestTurn;
    }

    double linear{0.0};
    double rotary{0.0};
    double largestTurn{0.0};
};

/// The part of a rewind at which the tool's end rests.
bool IsTurn(const MotionRow& row, const BlockTravel& travel)
{
    return row.flags.isRewind && travel.tip < travel.lengthDigit;
}

} // namespace

GcodeWriter::GcodeWriter(const Dialect& inDialect, const LoadedMachine& ofMachine,
                         const std::vector<const Axis*>& axes, const Toolpath& ofPath)
    : dialect(inDialect), machine(ofMachine), path(ofPath),
      coordinates(dialect.tcp ? TipCoordinates(machine, axes, dialect)
                              : AxisCoordinates(machine, axes, dialect)),
      blocks(dialect, coordinates)
{
    for (const Axis* axis : axes) {
        isRotary.push_back(axis->isRotary);
    }
    RefuseUnwritable();
}

std::string GcodeWriter::Begin() const
{
    std::string text;
    for (const std::string& line : Filled(dialect.header)) {
        text += line + "\n";
    }
    return text;
}

std::string GcodeWriter::End()
{
    std::string text = SwitchTcp(false);
    for (const std::string& line : Filled(dialect.footer)) {
        text += line + "\n";
    }
    return text;
}

std::string GcodeWriter::Row(const MotionRow& row)
{
    const ToolPoint& point = path.points.at(row.point);
    if (row.flags.hasFailed) {
        Refuse(point.line, "this point is not reached, and a program that leaves points out is not "
                           "written; have it reached, or take it out of the toolpath");
    }
    std::string text = EnterOperation(static_cast<std::size_t>(point.operation));
    const std::vector<double> values = ValuesAt(row);
    if (last && values == last->values) {
        return text;
    }
    text += Block(row, values);
    last = Place{row, values};
    return text;
}

std::string GcodeWriter::Block(const MotionRow& row, const std::vector<double>& values)
{
    const BlockTravel travel = last ? TravelTo(row, values) : BlockTravel();
    if (last && dialect.tcp && IsTurn(row, travel) && travel.linear < travel.lengthDigit) {
        return TurnWithoutTcp(values);
    }
    const std::string tcp = SwitchTcp(true); // before the block: it makes the block say everything
    if (!last || IsRapid(row, travel)) {
        return tcp + blocks.Rapid(values);
    }
    return tcp + blocks.Straight(values, FeedWordsFor(row, travel));
}

std::string GcodeWriter::EnterOperation(std::size_t index)
{
    if (hasBegun && index == operation) {
        return "";
    }
    hasBegun = true;
    operation = index;
    const Operation& entered = path.operations.at(index);
    std::string text = entered.name.empty() ? "" : blocks.Comment(entered.name);
    if (entered.toolNumber && entered.toolNumber != tool) {
        text += SwitchTcp(false);
        tool = entered.toolNumber;
        text += blocks.Lines(Filled(dialect.toolChange));
        blocks.Forget();
        last.reset();
    }
    return text;
}

/// With tool centre point control the linear axes would follow the part round.
std::string GcodeWriter::TurnWithoutTcp(const std::vector<double>& values)
{
    std::string text = SwitchTcp(false);
    text += blocks.RapidTurn(values);
    return text + SwitchTcp(true);
}

std::string GcodeWriter::SwitchTcp(bool isOn)
{
    if (!dialect.tcp || isOn == isTcpOn) {
        return "";
    }
    isTcpOn = isOn;
    std::string text = blocks.Lines(Filled(isOn ? dialect.tcp->on : dialect.tcp->off));
    blocks.Forget();
    return text;
}

std::vector<double> GcodeWriter::ValuesAt(const MotionRow& row) const
{
    std::vector<double> values(coordinates.size());
    std::transform(coordinates.begin(), coordinates.end(), values.begin(),
                   [&row](const Coordinate& coordinate) { return coordinate.At(row); });
    return values;
}

bool GcodeWriter::IsRapid(const MotionRow& row, const BlockTravel& travel) const
{
    return row.flags.isRapid || (row.flags.isRewind && path.points[row.point].isRapid) ||
           (!dialect.tcp && IsTurn(row, travel));
}

BlockTravel GcodeWriter::TravelTo(const MotionRow& row, const std::vector<double>& values) const
{
    Way ofAxes;
    for (std::size_t i = 0; i < row.joints.size(); ++i) {
        ofAxes.Add(isRotary[i], row.joints[i] - last->row.joints[i]);
    }
    Way ofWords;
    for (std::size_t i = 0; i < values.size(); ++i) {
        ofWords.Add(coordinates[i].isRotary, values[i] - last->values[i]);
    }
    BlockTravel travel;
    travel.tip = Length(row.asked.position - last->row.asked.position);
    travel.linear = ofAxes.linear;
    travel.turn_deg = ToDegrees(ofAxes.largestTurn);
    travel.wordsLinear = ofWords.linear;
    travel.wordsTurn_deg = ofWords.rotary;
    travel.lengthDigit = 1.0 / ScaleOf(LengthDecimals(machine, dialect));
    travel.degreeDigit = 1.0 / ScaleOf(dialect.decimals.degree);
    return travel;
}

BlockWriter::FeedWords GcodeWriter::FeedWordsFor(const MotionRow& row,
                                                 const BlockTravel& travel) const
{
    const ToolPoint& point = path.points[row.point];
    const auto feed = FeedOf(FeedAt(point), travel, dialect);
    if (!feed) {
        Refuse(point.line, "the feed on the way to this point is per revolution while rotary axes "
                           "turn, which a control does not keep on the part; give it per minute");
    }
    const int decimals = dialect.decimals.feed;
    if (std::round(feed->value * ScaleOf(decimals)) < 1.0) {
        Refuse(point.line, "F on the way to this point would be 0 with " +
                               std::to_string(decimals) +
                               " decimals; take a dialect with more of them for the feed");
    }
    return {feed->per == FeedPer::Revolution ? *dialect.feed.perRevolution : dialect.feed.word,
            "F" + NumberText(feed->value, decimals, dialect.decimals.keepsZeros),
            feed->per == FeedPer::Minute && dialect.feed.mode == FeedMode::InverseTime};
}

const Feed& GcodeWriter::FeedAt(const ToolPoint& point) const
{
    if (!point.feed) {
        Refuse(point.line, "no feed holds at this point, which is not rapid; give one before it "
                           "(FEDRAT in an APT file, a column f in a CSV file)");
    }
    if (point.feed->per == FeedPer::Revolution && !dialect.feed.perRevolution) {
        Refuse(point.line, "the feed at this point is per revolution, for which dialect " +
                               Quoted(dialect.name) + " has no word; give it per minute");
    }
    return *point.feed;
}

/// What can be refused before the first row: nobody should wait for a motion to be told.
void GcodeWriter::RefuseUnwritable() const
{
    Filled(dialect.header);
    Filled(dialect.footer);
    if (dialect.tcp) {
        Filled(dialect.tcp->on);
        Filled(dialect.tcp->off);
    }
    for (std::size_t i = 1; i < path.points.size(); ++i) { // the way to the first has no feed
        if (!path.points[i].isRapid) {
            FeedAt(path.points[i]);
        }
    }
}

std::vector<std::string> GcodeWriter::Filled(const std::vector<std::string>& lines) const
{
    std::vector<std::string> filled(lines.size());
    std::transform(lines.begin(), lines.end(), filled.begin(), [this](const std::string& line) {
        return host::Filled(line, [this](std::string_view name) { return ValueOf(name); });
    });
    return filled;
}

std::string GcodeWriter::ValueOf(std::string_view placeholder) const
{
    if (placeholder == "program") {
        return CommentText(std::filesystem::path(path.file).stem().string());
    }
    if (placeholder == "machine") {
        return CommentText(machine.name);
    }
    if (placeholder == "operation") {
        return CommentText(path.operations.at(operation).name);
    }
    if (placeholder == "unit") {
        return machine.length == LengthUnit::Millimetre ? dialect.mm : dialect.inch;
    }
    return ToolNumber();
}

std::string GcodeWriter::ToolNumber() const
{
    const Operation& current = path.operations.at(operation);
    const std::optional<int> number = tool ? tool : current.toolNumber;
    if (!number) {
        Refuse(current.line, "dialect " + Quoted(dialect.name) +
                                 " writes the tool's number, and none is given here; give it "
                                 "(LOADTL/1 in an APT file), or write the number in place of "
                                 "{tool} in a dialect of your own");
    }
    return std::to_string(*number);
}

void GcodeWriter::Refuse(int line, const std::string& sentence) const
{
    throw InputError(path.file, {line, 1}, sentence);
}

} // namespace host
