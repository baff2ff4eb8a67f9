#ifndef TRUNNION_HOST_APP_BUNDLED_PAGE_H
#define TRUNNION_HOST_APP_BUNDLED_PAGE_H

#include "app/PageHtml.h"

namespace host
{

/// The page that the program was built with.
BuiltPage BundledPage();

} // namespace host

#endif
