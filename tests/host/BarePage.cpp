#include "app/BundledPage.h"
#include "report/Page.h"

namespace host
{

BuiltPage BundledPage()
{
    return kDataMark;
}

} // namespace host
