#include "toolpath/PathBuilder.h"

#include <utility>

#include "text/Quoted.h"

namespace host
{

PathBuilder::PathBuilder(std::string file, std::size_t mostPoints) : limit(mostPoints)
{
    path.file = std::move(file);
}

void PathBuilder::BeginAnother(int line)
{
    if (isUnderWay || next.line == 0) {
        next.line = line;
    }
    isUnderWay = false;
}

void PathBuilder::BeginOperation(std::string_view name, int line)
{
    if (isNamed) {
        EndOperation(); // the one of that name stays without points
    }
    BeginAnother(line);
    next.name = WithoutControlCharacters(name);
    isNamed = true;
}

void PathBuilder::EndOperation()
{
    next.name.clear();
    next.line = 0;
    isUnderWay = false;
    isNamed = false;
}

void PathBuilder::SetToolNumber(int number, int line)
{
    BeginAnother(line);
    next.toolNumber = number;
}

void PathBuilder::SetToolLength(std::optional<double> length, int line)
{
    if (!isUnderWay || length != next.toolLength) {
        BeginAnother(line);
        next.toolLength = length;
    }
}

void PathBuilder::Add(const ToolPoint& point)
{
    if (path.points.size() == limit) {
        Refuse({point.line, 1},
               "this path has more than " + std::to_string(limit) + " points; split it");
    }
    if (!isUnderWay) {
        BeginAnother(point.line);
        next.firstPoint = path.points.size();
        path.operations.push_back(next);
        isUnderWay = true;
        isNamed = false;
    }
    path.points.push_back(point);
    path.points.back().operation = static_cast<int>(path.operations.size()) - 1;
}

void PathBuilder::Warn(TextPosition at, const std::string& sentence)
{
    path.warnings.push_back(path.file + ":" + std::to_string(at.line) + ":" +
                            std::to_string(at.column) + ": warning: " + sentence);
}

const ToolPoint* PathBuilder::Last() const
{
    return path.points.empty() ? nullptr : &path.points.back();
}

void PathBuilder::Refuse(TextPosition at, const std::string& sentence) const
{
    throw InputError(path.file, at, sentence);
}

Toolpath PathBuilder::Finish(const std::string& whyEmpty)
{
    if (path.points.empty()) {
        Refuse({1, 1}, whyEmpty);
    }
    return std::move(path);
}

} // namespace host
