#ifndef TRUNNION_BENCH_AIMS_H
#define TRUNNION_BENCH_AIMS_H

#include <string>
#include <utility>
#include <vector>

#include "Measurements.h"

namespace bench
{

/// What the library is to reach, and how near it comes where it is best and where it is worst.
class Aim
{
  public:
    Aim(std::string withText, bool isAtMost, double withBound)
        : text(std::move(withText)), isUpperBound(isAtMost), bound(withBound)
    {}

    void Take(double measured, const std::string& place);

    const std::string& Text() const { return text; }
    bool IsUpperBound() const { return isUpperBound; }
    double Bound() const { return bound; }
    bool IsMeasured() const { return !worstPlace.empty(); }
    double Best() const { return best; }
    double Worst() const { return worst; }
    const std::string& WorstPlace() const { return worstPlace; } //!< operation and machine
    bool IsMet() const { return !IsBetter(bound, worst); }

  private:
    bool IsBetter(double a, double b) const { return isUpperBound ? a < b : a > b; }

    std::string text;
    bool isUpperBound;
    double bound;
    double best{0.0};
    double worst{0.0};
    std::string worstPlace;
};

/// In the order in which they are printed; without those for which nothing was measured.
std::vector<Aim> AimsOf(const Measurements& measurements);

} // namespace bench

#endif
