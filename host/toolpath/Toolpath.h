#ifndef TRUNNION_HOST_TOOLPATH_TOOLPATH_H
#define TRUNNION_HOST_TOOLPATH_TOOLPATH_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "geometry/Vec3.h"

// What a toolpath file asks for, in part coordinates and the machine's length unit.
namespace host
{

enum class FeedPer { Minute, Revolution };

struct Feed
{
    double value{0.0}; //!< [length] per minute or per revolution
    FeedPer per{FeedPer::Minute};
};

/// The tool's end and direction at one point of the path.
struct ToolPoint
{
    int line{0};      //!< of the file, where its statement begins
    int operation{0}; //!< index into Toolpath::operations
    Vec3 position{};
    Vec3 direction{}; //!< from the tool's end to its shank; length 1
    bool isRapid{false};
    std::optional<Feed> feed; //!< nothing until the file gives one
};

/// What is done with one tool under one name.
struct Operation
{
    std::string name; //!< empty where the file gives none
    int line{0};      //!< where it begins
    std::size_t firstPoint{0};
    std::optional<int> toolNumber;
    std::optional<double> toolLength; //!< from the tool's seat to its end [length]
};

struct Toolpath
{
    std::string file;
    std::vector<ToolPoint> points;
    std::vector<Operation> operations; //!< in the order of their points; at least one
    std::vector<std::string> warnings; //!< whole sentences with their place
};

} // namespace host

#endif
