#include "model/TreeVisit.h"

namespace trunnion
{

namespace
{
thread_local const TreeVisit* innermost = nullptr;
}

TreeVisit::TreeVisit(Walk ofWalk, const IkNode* ofNode)
    : outer(innermost), walk(ofWalk), node(ofNode)
{
    for (const TreeVisit* visit = outer; visit != nullptr && !isCycle; visit = visit->outer) {
        isCycle = visit->walk == walk && visit->node == node;
    }
    innermost = this;
}

TreeVisit::~TreeVisit()
{
    innermost = outer;
}

} // namespace trunnion
