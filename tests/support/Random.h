#ifndef TRUNNION_TESTS_SUPPORT_RANDOM_H
#define TRUNNION_TESTS_SUPPORT_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace test
{

/// SplitMix64: the same numbers from the same seed with every compiler and standard library. Or
/// else what bytes say: a byte for each choice, four for each number between two bounds, and when
/// they are at their end what follows from the first eight.
class Random
{
  public:
    explicit Random(std::uint64_t seed) : state(seed) {}
    /// The bytes have to outlive this.
    Random(const std::uint8_t* bytes, std::size_t size) : state(0), next(bytes), end(bytes + size)
    {
        state = Taken(8);
    }

    std::uint64_t Bits()
    {
        if (next != end) {
            return Taken(8);
        }
        state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    /// Uniform in [low, high).
    double Between(double low, double high)
    {
        const double unit = next != end ? static_cast<double>(Taken(4)) * 0x1.0p-32
                                        : static_cast<double>(Bits() >> 11U) * 0x1.0p-53;
        return low + unit * (high - low);
    }

    /// Uniform in 0 .. count-1.
    int Below(int count)
    {
        const std::uint64_t bits = next != end ? Taken(count > 256 ? 4 : 1) : Bits();
        return static_cast<int>(bits % static_cast<std::uint64_t>(count));
    }

    bool OneIn(int count) { return Below(count) == 0; }

    double OneOf(std::initializer_list<double> values)
    {
        return *(values.begin() + Below(static_cast<int>(values.size())));
    }

  private:
    /// The next bytes, or as many of them as there are.
    std::uint64_t Taken(int count)
    {
        std::uint64_t bits = 0;
        for (int i = 0; i < count && next != end; ++i) {
            bits = bits << 8U | *next++;
        }
        return bits;
    }

    std::uint64_t state;
    const std::uint8_t* next{nullptr};
    const std::uint8_t* end{nullptr};
};

} // namespace test

#endif
