#ifndef TRUNNION_HOST_TEXT_LOCATED_H
#define TRUNNION_HOST_TEXT_LOCATED_H

#include "text/InputError.h"

namespace host
{

/// A value and where the file says it.
template <class Value>
struct Located
{
    Value value{};
    TextPosition at;
};

} // namespace host

#endif
