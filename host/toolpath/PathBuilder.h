#ifndef TRUNNION_HOST_TOOLPATH_PATH_BUILDER_H
#define TRUNNION_HOST_TOOLPATH_PATH_BUILDER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "text/InputError.h"
#include "toolpath/Toolpath.h"

namespace host
{

constexpr std::size_t kMostPathPoints = 20'000'000; //!< about 2 GiB

/// Collects the points of a path and cuts it into operations. What is said of an operation before
/// its first point is said of one and the same; an operation without points is not kept.
class PathBuilder
{
  public:
    explicit PathBuilder(std::string file, std::size_t mostPoints = kMostPathPoints);

    /// The points that follow are an operation of this name.
    void BeginOperation(std::string_view name, int line);
    /// The points that follow, unless a new one is begun, are an operation without name.
    void EndOperation();
    /// The points that follow are done with this tool: a new operation.
    void SetToolNumber(int number, int line);
    /// The points that follow are done with a tool of this length (nothing: not known): a new
    /// operation where that is another length.
    void SetToolLength(std::optional<double> length, int line);

    /// The point's index of an operation is filled in here.
    void Add(const ToolPoint& point);
    void Warn(TextPosition at, const std::string& sentence);

    /// The tool and length of the point that would be added next.
    const Operation& Next() const { return next; }
    /// The last point, or null.
    const ToolPoint* Last() const;
    bool IsEmpty() const { return path.points.empty(); }
    std::size_t Count() const { return path.points.size(); }
    /// True when the next point is the first of an operation.
    bool IsAtStart() const { return !isUnderWay; }

    const std::string& File() const { return path.file; }
    [[noreturn]] void Refuse(TextPosition at, const std::string& sentence) const;
    /// Refuses a path without points.
    Toolpath Finish(const std::string& whyEmpty);

  private:
    void BeginAnother(int line);

    Toolpath path;
    std::size_t limit;
    Operation next;         // line 0 as long as nothing has begun it
    bool isUnderWay{false}; // `next` is the last of the path's operations
    bool isNamed{false};    // `next` was named, and no point came since
};

} // namespace host

#endif
