#ifndef TRUNNION_HOST_TABLE_TABLE_ROW_H
#define TRUNNION_HOST_TABLE_TABLE_ROW_H

#include "motion/MotionRow.h"

namespace host
{

/// A row of a joint table.
struct TableRow
{
    int tableLine{0}; //!< where it stands
    int pathLine{0};  //!< where the toolpath has its point
    MotionRow motion; //!< joints in the order of the reader's axes; `asked` is not in a table
};

} // namespace host

#endif
