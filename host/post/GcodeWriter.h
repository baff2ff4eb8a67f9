#ifndef TRUNNION_HOST_POST_GCODE_WRITER_H
#define TRUNNION_HOST_POST_GCODE_WRITER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/LoadedMachine.h"
#include "motion/MotionRow.h"
#include "post/BlockFeed.h"
#include "post/BlockWriter.h"
#include "post/Dialect.h"
#include "post/Words.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// Writes a motion as G-code, row by row. Keeps references to what it is made from.
///
/// Rapid rows are G0, the others G1. Also G0 are the way to the first row, and to the first one
/// after a tool change, since nothing is known of where it begins; every row of a rewind at a rapid
/// point; and the turn of any rewind, with the tool pulled back. A row at which no word changes is
/// not written; the next block has its way and time.
///
/// With tool centre point control, a rewind turns with that control off where no linear axis moves,
/// so that none does. Where the axes swing to another branch it stays on and holds the tool's end
/// in its place; that block is G1.
class GcodeWriter
{
  public:
    /// `axes` are those that the rows have joints of. Throws InputError for axes,
    /// feeds or a missing tool number that the dialect cannot write.
    GcodeWriter(const Dialect& inDialect, const LoadedMachine& ofMachine,
                const std::vector<const Axis*>& axes, const Toolpath& ofPath);

    std::string Begin() const;
    /// Throws InputError for a row that has no place in a program: a point that is not reached, or
    /// one without a feed that the dialect can write.
    std::string Row(const MotionRow& row);
    std::string End();

  private:
    /// Where the last block leads.
    struct Place
    {
        MotionRow row;
        std::vector<double> values; //!< of the coordinates
    };

    std::string EnterOperation(std::size_t index);
    std::string Block(const MotionRow& row, const std::vector<double>& values);
    std::string TurnWithoutTcp(const std::vector<double>& values);
    std::string SwitchTcp(bool isOn);

    std::vector<double> ValuesAt(const MotionRow& row) const;
    bool IsRapid(const MotionRow& row, const BlockTravel& travel) const;
    BlockTravel TravelTo(const MotionRow& row, const std::vector<double>& values) const;
    const Feed& FeedAt(const ToolPoint& point) const;
    void RefuseUnwritable() const;
    BlockWriter::FeedWords FeedWordsFor(const MotionRow& row, const BlockTravel& travel) const;

    std::vector<std::string> Filled(const std::vector<std::string>& lines) const;
    std::string ValueOf(std::string_view placeholder) const;
    std::string ToolNumber() const;
    [[noreturn]] void Refuse(int line, const std::string& sentence) const;

    const Dialect& dialect;
    const LoadedMachine& machine;
    const Toolpath& path;
    std::vector<bool> isRotary; //!< of each joint of a row
    std::vector<Coordinate> coordinates;
    BlockWriter blocks;
    std::optional<Place> last; //!< nothing where the axes may stand anywhere
    std::size_t operation{0};
    bool hasBegun{false};
    std::optional<int> tool;
    bool isTcpOn{false};
};

} // namespace host

#endif
