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

void PutFrame(ByteWriter& bytes, const Toolpath& path)
{
    bytes.PutText(path.file);
    bytes.Put(static_cast<std::uint64_t>(path.operations.size()));
    for (const Operation& operation : path.operations) {
        bytes.PutText(operation.name);
        bytes.Put(operation.line);
        bytes.Put(static_cast<std::uint64_t>(operation.firstPoint));
        PutOptional(bytes, operation.toolNumber);
        PutOptional(bytes, operation.toolLength);
    }
}

bool TakeFrame(ByteReader& bytes, Toolpath& path)
{
    return bytes.TakeText(path.file) && bytes.TakeEach(path.operations, TakeOperation);
}

PathPart PartOf(const PathWindow& path, std::size_t first, std::size_t end)
{
    PathPart part{{}, first, path.NumPoints()};
    if (first < end) {
        part.points.assign(&path[first], &path[first] + (end - first));
    }
    return part;
}

void Put(ByteWriter& bytes, const PathPart& part)
{
    bytes.PutAll(part.points);
    bytes.Put(static_cast<std::uint64_t>(part.first));
    bytes.Put(static_cast<std::uint64_t>(part.ofWhole));
}

bool Take(ByteReader& bytes, PathPart& part)
{
    std::uint64_t first = 0;
    std::uint64_t ofWhole = 0;
    const bool isThere = bytes.TakeAll(part.points) && bytes.Take(first) && bytes.Take(ofWhole);
    part.first = first;
    part.ofWhole = ofWhole;
    return isThere;
}

} // namespace host
