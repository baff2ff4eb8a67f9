#include "verify/VerificationReport.h"

namespace host
{

void VerificationReport::Add(const VerificationReport& behind)
{
    rows += behind.rows;
    inserted += behind.inserted;
    rewound += behind.rewound;
    rapids += behind.rapids;
    toolChanges += behind.toolChanges;
    interrupted += behind.interrupted;
    pointPosition.Raise(behind.pointPosition);
    pointDirection_deg.Raise(behind.pointDirection_deg);
    wayPosition.Raise(behind.wayPosition);
    wayDirection_deg.Raise(behind.wayDirection_deg);
    for (std::size_t kind = 0; kind < findings.size(); ++kind) {
        findings[kind] += behind.findings[kind];
    }
}

} // namespace host
