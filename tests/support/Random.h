#ifndef TRUNNION_TESTS_SUPPORT_RANDOM_H
#define TRUNNION_TESTS_SUPPORT_RANDOM_H

#include <cstdint>
#include <initializer_list>

namespace test
{

/// SplitMix64: the same numbers from the same seed with every compiler and standard library.
class Random
{
  public:
    explicit Random(std::uint64_t seed) : state(seed) {}

    std::uint64_t Bits()
    {
        state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    /// Uniform in [low, high).
    double Between(double low, double high)
    {
        const double unit = static_cast<double>(Bits() >> 11U) * 0x1.0p-53;
        return low + unit * (high - low);
    }

    /// Uniform in 0 .. count-1.
    int Below(int count) { return static_cast<int>(Bits() % static_cast<std::uint64_t>(count)); }

    bool OneIn(int count) { return Below(count) == 0; }

    double OneOf(std::initializer_list<double> values)
    {
        return *(values.begin() + Below(static_cast<int>(values.size())));
    }

  private:
    std::uint64_t state;
};

} // namespace test

#endif
