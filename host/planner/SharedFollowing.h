#ifndef TRUNNION_HOST_PLANNER_SHARED_FOLLOWING_H
#define TRUNNION_HOST_PLANNER_SHARED_FOLLOWING_H

#include <vector>

#include "planner/Candidates.h"
#include "planner/Workplace.h"
#include "ranks/SharedWork.h"

namespace host
{

/// Follows solutions with other ranks to help, each rank one at a time.
std::vector<FollowedWay> FollowShared(Workplace& place, const FollowTask& task, WorkLeader& leader);

} // namespace host

#endif
