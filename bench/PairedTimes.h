#ifndef TRUNNION_BENCH_PAIRED_TIMES_H
#define TRUNNION_BENCH_PAIRED_TIMES_H

#include <optional>
#include <string>
#include <vector>

#include "Scene.h"

namespace bench
{

/// Times of the contenders of a scene, taken in turn: A B C A B C ... What disturbs a round
/// disturbs all of them, and a ratio is the median of those within a round.
class PairedTimes
{
  public:
    PairedTimes(const Scene& scene, const Effort& effort);

    int Rounds() const;
    /// Of one call [s]; nothing without such a contender.
    std::optional<double> Median(const std::string& contender) const;
    std::optional<double> MedianRatio(const std::string& over, const std::string& under) const;
    /// Of the difference between one call of two contenders [s].
    std::optional<double> MedianDifference(const std::string& from, const std::string& taken) const;

  private:
    struct Series
    {
        std::string contender;
        std::vector<double> seconds; //!< of one call, round by round
    };

    const Series* Find(const std::string& contender) const;

    std::vector<Series> all;
};

} // namespace bench

#endif
