#include "app/PageHtml.h"

#include "text/InputError.h"

namespace host
{

std::string_view PageFor(const std::string& asker, const BuiltPage& built)
{
    if (!built) {
        throw InputError(asker, "this trunnion was built without reports; install Node.js and npm "
                                "and build it again with -DTRUNNION_REPORTS=ON");
    }
    return *built;
}

} // namespace host
