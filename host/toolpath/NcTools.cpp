#include "toolpath/NcTools.h"

#include <utility>

namespace host
{

namespace
{

/// Of operations that begin at the same point the last one counts.
void Append(std::vector<Operation>& operations, Operation operation)
{
    if (!operations.empty() && operations.back().firstPoint == operation.firstPoint) {
        operations.pop_back();
    }
    operations.push_back(std::move(operation));
}

Operation Beginning(std::optional<int> tool, int line, std::size_t points)
{
    Operation operation;
    operation.line = line;
    operation.firstPoint = points;
    operation.toolNumber = tool;
    return operation;
}

} // namespace

void NcTools::Select(int number, int line, std::size_t points)
{
    selected = number;
    Append(selections, Beginning(number, line, points));
}

void NcTools::Change(int line, std::size_t points)
{
    Append(changes, Beginning(selected, line, points));
}

void NcTools::CutIntoOperations(Toolpath& path) const
{
    std::vector<Operation> operations = changes.empty() ? selections : changes;
    while (!operations.empty() && operations.back().firstPoint >= path.points.size()) {
        operations.pop_back();
    }
    if (operations.empty() || operations.front().firstPoint > 0) {
        operations.insert(operations.begin(), Beginning(std::nullopt, path.points.front().line, 0));
    }
    std::size_t current = 0;
    for (std::size_t i = 0; i < path.points.size(); ++i) {
        if (current + 1 < operations.size() && operations[current + 1].firstPoint == i) {
            ++current;
        }
        path.points[i].operation = static_cast<int>(current);
    }
    path.operations = std::move(operations);
}

} // namespace host
