// In the place of KdlSolvers.cpp where KDL is not installed.

#include "KdlSolvers.h"

namespace bench
{

void CheckKdlChain(const Subject& /*subject*/, const std::vector<JointValues>& /*joints*/) {}

std::function<void()> KdlForward(const Subject& /*subject*/,
                                 const std::vector<JointValues>& /*joints*/)
{
    return nullptr;
}

std::unique_ptr<PoseSolver> MakeKdlNewton(const Subject& /*subject*/, const Task& /*task*/)
{
    return nullptr;
}

std::unique_ptr<PoseSolver> MakeKdlLevenbergMarquardt(const Subject& /*subject*/,
                                                      const Task& /*task*/)
{
    return nullptr;
}

} // namespace bench
