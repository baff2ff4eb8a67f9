#ifndef TRUNNION_HOST_TABLE_ROW_FLAG_NAMES_H
#define TRUNNION_HOST_TABLE_ROW_FLAG_NAMES_H

#include <array>
#include <string_view>

#include "motion/MotionRow.h"

namespace host
{

/// A flag and its name in the joint table.
struct RowFlagName
{
    bool RowFlags::*member;
    std::string_view name;
};

/// In the order in which a row lists them.
constexpr std::array kRowFlagNames{
    RowFlagName{&RowFlags::isRapid, "rapid"},   RowFlagName{&RowFlags::isInserted, "inserted"},
    RowFlagName{&RowFlags::isFlip, "flip"},     RowFlagName{&RowFlags::isRewind, "rewind"},
    RowFlagName{&RowFlags::isPole, "pole"},     RowFlagName{&RowFlags::isAtLimit, "limit"},
    RowFlagName{&RowFlags::hasFailed, "failed"}};

} // namespace host

#endif
