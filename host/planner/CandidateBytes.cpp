#include "planner/CandidateBytes.h"

#include <cstdint>

namespace host
{

void Put(ByteWriter& bytes, const CandidateBlock& block)
{
    bytes.Put(static_cast<std::uint64_t>(block.firstPoint));
    bytes.PutAll(block.ends);
    bytes.PutAll(block.joints);
    bytes.PutAll(block.branches);
    bytes.PutAll(block.parents);
    bytes.Put(static_cast<std::uint64_t>(block.exits.size()));
    for (const JointValues& exit : block.exits) {
        bytes.PutAll(exit);
    }
}

std::string BytesOf(const CandidateBlock& block)
{
    ByteWriter bytes;
    Put(bytes, block);
    return bytes.Take();
}

bool TakeBlock(ByteReader& bytes, CandidateBlock& block)
{
    std::uint64_t firstPoint = 0;
    std::uint64_t exits = 0;
    if (!bytes.Take(firstPoint) || !bytes.TakeAll(block.ends) || !bytes.TakeAll(block.joints) ||
        !bytes.TakeAll(block.branches) || !bytes.TakeAll(block.parents) || !bytes.Take(exits)) {
        return false;
    }
    block.firstPoint = firstPoint;
    for (std::uint64_t i = 0; i < exits; ++i) {
        block.exits.emplace_back();
        if (!bytes.TakeAll(block.exits.back())) {
            return false;
        }
    }
    return true;
}

} // namespace host
