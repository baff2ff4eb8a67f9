#include "toolpath/PathBytes.h"

#include <cstdint>

namespace host
{

namespace
{

template <class Value>
void PutOptional(ByteWriter& bytes, const std::optional<Value>& value)
{
    bytes.Put(value.has_value());
    bytes.Put(value.value_or(Value{}));
}

template <class Value>
bool TakeOptional(ByteReader& bytes, std::optional<Value>& value)
{
    bool hasValue = false;
    Value taken{};
    if (!bytes.Take(hasValue) || !bytes.Take(taken)) {
        return false;
    }
    value = hasValue ? std::optional<Value>(taken) : std::nullopt;
    return true;
}

bool TakePoint(ByteReader& bytes, ToolPoint& point)
{
    return bytes.Take(point.line) && bytes.Take(point.operation) && bytes.Take(point.position) &&
           bytes.Take(point.direction) && bytes.Take(point.isRapid) &&
           TakeOptional(bytes, point.feed);
}

bool TakeOperation(ByteReader& bytes, Operation& operation)
{
    std::uint64_t firstPoint = 0;
    if (!bytes.TakeText(operation.name) || !bytes.Take(operation.line) || !bytes.Take(firstPoint) ||
        !TakeOptional(bytes, operation.toolNumber) || !TakeOptional(bytes, operation.toolLength)) {
        return false;
    }
    operation.firstPoint = firstPoint;
    return true;
}

} // namespace

void Put(ByteWriter& bytes, const Toolpath& path)
{
    bytes.PutText(path.file);
    bytes.Put(static_cast<std::uint64_t>(path.points.size()));
    for (const ToolPoint& point : path.points) {
        bytes.Put(point.line);
        bytes.Put(point.operation);
        bytes.Put(point.position);
        bytes.Put(point.direction);
        bytes.Put(point.isRapid);
        PutOptional(bytes, point.feed);
    }
    bytes.Put(static_cast<std::uint64_t>(path.operations.size()));
    for (const Operation& operation : path.operations) {
        bytes.PutText(operation.name);
        bytes.Put(operation.line);
        bytes.Put(static_cast<std::uint64_t>(operation.firstPoint));
        PutOptional(bytes, operation.toolNumber);
        PutOptional(bytes, operation.toolLength);
    }
}

bool Take(ByteReader& bytes, Toolpath& path)
{
    return bytes.TakeText(path.file) && bytes.TakeEach(path.points, TakePoint) &&
           bytes.TakeEach(path.operations, TakeOperation);
}

} // namespace host
