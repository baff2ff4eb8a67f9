#include "app/Helpers.h"

#include <utility>

namespace host
{

Helpers::Helpers(Ranks& others) : ranks(others), leader(others) {}

Helpers::~Helpers()
{
    LetGo();
}

void Helpers::LetGo()
{
    if (std::exchange(haveGone, true)) {
        return;
    }
    if (isSharing) {
        DismissRanks(ranks);
    } else {
        ranks.FromLeader({});
    }
}

void Helpers::Share(const std::function<std::string()>& sources)
{
    if (ranks.Size() > 1) {
        isSharing = true;
        ranks.FromLeader(sources());
    }
}

} // namespace host
