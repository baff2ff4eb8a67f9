// For builds without reports.

#include "app/BundledPage.h"

namespace host
{

BuiltPage BundledPage()
{
    return std::nullopt;
}

} // namespace host
