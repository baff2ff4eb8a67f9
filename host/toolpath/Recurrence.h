#ifndef TRUNNION_HOST_TOOLPATH_RECURRENCE_H
#define TRUNNION_HOST_TOOLPATH_RECURRENCE_H

#include <cstdint>
#include <string>

#include "toolpath/PathBuilder.h"

namespace host
{

/// Something to warn of once, however often it occurs.
class Recurrence
{
  public:
    void AddAt(TextPosition at)
    {
        if (count++ == 0) {
            first = at;
        }
    }

    void WarnIn(PathBuilder& path, const std::string& fact, const std::string& advice) const
    {
        if (count > 0) {
            path.Warn(first, fact + ", " + std::to_string(count) +
                                 " in all and the first of them here; " + advice);
        }
    }

  private:
    std::uint64_t count{0};
    TextPosition first;
};

} // namespace host

#endif
