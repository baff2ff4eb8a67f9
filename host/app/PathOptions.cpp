#include "app/PathOptions.h"

namespace host
{

Toolpath ReadPath(const PathOptions& options, LengthUnit unit, std::ostream& warnings)
{
    Toolpath path = ReadToolpath(options.file, options.format, unit);
    for (const std::string& warning : path.warnings) {
        warnings << warning << "\n";
    }
    return path;
}

} // namespace host
