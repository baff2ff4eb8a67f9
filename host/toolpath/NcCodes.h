#ifndef TRUNNION_HOST_TOOLPATH_NC_CODES_H
#define TRUNNION_HOST_TOOLPATH_NC_CODES_H

#include <optional>
#include <string>

#include "geometry/Units.h"
#include "toolpath/NcBlock.h"

namespace host
{

enum class NcFeedMode {
    PerMinute,     //!< G94
    PerRevolution, //!< G95
    InverseTime    //!< G93
};

/// What the coordinates are those of.
enum class NcLengthMode {
    Unstated, //!< taken for the tool's end
    Vectors,  //!< G43.5: the tool's end, whose direction is I J K
    Upright,  //!< G43: the tool's end, while the tool is upright
    Off       //!< G49: the spindle
};

/// What the G words of one block ask for.
struct NcAsked
{
    std::optional<bool> isRapid; //!< G0, not G1
    std::optional<LengthUnit> unit;
    std::optional<NcFeedMode> feedMode;
    std::optional<NcLengthMode> lengthMode;
    std::optional<int> workOffset; //!< ten times the number behind G
    bool isDwell{false};           //!< G4
    bool isPathMode{false};        //!< G64
};

constexpr int kUsualWorkOffset = 540; // G54, which holds where a program names none

/// Throws InputError for a code that is not known, and for two that exclude each other.
NcAsked AskedBy(const NcBlock& block, const std::string& file);

} // namespace host

#endif
