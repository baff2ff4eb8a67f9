#ifndef TRUNNION_HOST_PLANNER_CANDIDATE_BYTES_H
#define TRUNNION_HOST_PLANNER_CANDIDATE_BYTES_H

#include <string>

#include "planner/Candidates.h"
#include "text/Bytes.h"

namespace host
{

/// A block as bytes, in this machine's own representation: it is read where it was written, or
/// beside.
void Put(ByteWriter& bytes, const CandidateBlock& block);
std::string BytesOf(const CandidateBlock& block);

/// Takes a block out of bytes; false where they end too soon. Whether it fits a plan is for the
/// plan to say.
bool TakeBlock(ByteReader& bytes, CandidateBlock& block);

} // namespace host

#endif
