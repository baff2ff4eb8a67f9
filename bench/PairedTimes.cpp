#include "PairedTimes.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>

#include <time.h> // NOLINT(modernize-deprecated-headers): clock_gettime is POSIX's

namespace bench
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double kShortestTurn = 3e-4; // of a contender in a round [s]

/// Processor time of this thread: others may want the machine too.
double ProcessorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double SecondsOf(const std::function<void()>& run, int times)
{
    const double start = ProcessorSeconds();
    for (int i = 0; i < times; ++i) {
        run();
    }
    return ProcessorSeconds() - start;
}

/// How often a contender runs in its turn.
int TimesOf(const Contender& contender)
{
    contender.run(); // the first run meets cold caches
    const double once = std::max(SecondsOf(contender.run, 1), 1e-7);
    return std::max(1, static_cast<int>(std::ceil(kShortestTurn / once)));
}

double MedianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Combine>
double MedianOfPairs(const std::vector<double>& a, const std::vector<double>& b,
                     const Combine& combine)
{
    std::vector<double> combined(a.size());
    std::transform(a.begin(), a.end(), b.begin(), combined.begin(), combine);
    return MedianOf(combined);
}

} // namespace

PairedTimes::PairedTimes(const Scene& scene, const Effort& effort)
{
    std::vector<int> times;
    for (const Contender& contender : scene.contenders) {
        all.push_back({contender.name, {}});
        times.push_back(TimesOf(contender));
    }
    const Clock::time_point start = Clock::now();
    const std::chrono::duration<double> enough(effort.seconds);
    while (Rounds() < effort.leastRounds || Clock::now() - start < enough) {
        for (std::size_t i = 0; i < all.size(); ++i) {
            const double seconds = SecondsOf(scene.contenders[i].run, times[i]);
            all[i].seconds.push_back(seconds / times[i] / scene.calls);
        }
    }
}

int PairedTimes::Rounds() const
{
    return static_cast<int>(all.back().seconds.size());
}

std::optional<double> PairedTimes::Median(const std::string& contender) const
{
    const Series* series = Find(contender);
    return series == nullptr ? std::nullopt : std::optional(MedianOf(series->seconds));
}

std::optional<double> PairedTimes::MedianRatio(const std::string& over,
                                               const std::string& under) const
{
    const Series* a = Find(over);
    const Series* b = Find(under);
    return a == nullptr || b == nullptr
               ? std::nullopt
               : std::optional(MedianOfPairs(a->seconds, b->seconds, std::divides<>()));
}

std::optional<double> PairedTimes::MedianDifference(const std::string& from,
                                                    const std::string& taken) const
{
    const Series* a = Find(from);
    const Series* b = Find(taken);
    return a == nullptr || b == nullptr
               ? std::nullopt
               : std::optional(MedianOfPairs(a->seconds, b->seconds, std::minus<>()));
}

const PairedTimes::Series* PairedTimes::Find(const std::string& contender) const
{
    const auto found = std::find_if(all.begin(), all.end(), [&contender](const Series& series) {
        return series.contender == contender;
    });
    return found == all.end() ? nullptr : &*found;
}

} // namespace bench
