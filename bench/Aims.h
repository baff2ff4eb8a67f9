#ifndef TRUNNION_BENCH_AIMS_H
#define TRUNNION_BENCH_AIMS_H

#include <string>
#include <vector>

#include "Measurements.h"

namespace bench
{

/// What the library is to reach, and where it is worst.
struct Aim
{
    std::string text;
    bool isUpperBound{true};
    double bound{0.0};
    double measured{0.0};
    std::string worst; //!< operation and machine
    bool IsMet() const { return isUpperBound ? measured <= bound : measured >= bound; }
};

/// In the order in which they are printed; without those for which nothing was measured.
std::vector<Aim> AimsOf(const Measurements& measurements);

} // namespace bench

#endif
