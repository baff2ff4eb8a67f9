#ifndef TRUNNION_TESTS_DIGEST_DIGEST_H
#define TRUNNION_TESTS_DIGEST_DIGEST_H

#include <cmath>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "support/Bits.h"
#include "support/Random.h"

// Digests of results, and their comparison with stored ones.
//
// Results depend on sin, cos and the like of the C library, whose last bits may differ from version
// to version and from CPU to CPU. So its functions have a digest of their own: where that one
// differs from the stored one, the others are not comparable and the test counts as skipped.
namespace test
{

constexpr int kSkipped = 77; // exit code

/// FNV-1a over the bits of doubles.
class Digest
{
  public:
    void Add(std::uint64_t bits)
    {
        for (int i = 0; i < 8; ++i) {
            hash = (hash ^ (bits & 0xFFU)) * 0x100000001B3U;
            bits >>= 8U;
        }
    }
    void Add(double x)
    {
        // Which NaN an operation yields is the processor's affair.
        Add(std::isnan(x) ? std::uint64_t{0x7FF8000000000000U} : BitsOf(x));
    }
    void Add(const std::string& text)
    {
        for (const char c : text) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
        }
    }
    std::uint64_t Value() const { return hash; }

  private:
    std::uint64_t hash{0xCBF29CE484222325U};
};

inline std::uint64_t LibraryFunctions()
{
    Digest digest;
    Random random(1);
    for (int i = 0; i < 20000; ++i) {
        const double x = random.Between(-7, 7);
        const double y = random.Between(-1, 1);
        for (const double value :
             {std::sin(x), std::cos(x), std::acos(y), std::hypot(x, y),
              std::fmod(x, 6.28318530717958), std::sqrt(x * x), std::atan2(y, x)}) {
            digest.Add(value);
        }
    }
    return digest.Value();
}

inline void PrintLine(std::ostream& os, const std::string& what, std::uint64_t digest)
{
    os << std::left << std::setw(40) << what << std::hex << std::setfill('0') << std::right
       << std::setw(16) << digest << std::dec << std::setfill(' ') << '\n';
}

inline int Compare(const std::string& library, const std::string& results, const char* expectedFile)
{
    std::ifstream file(expectedFile);
    std::string expectedLibrary;
    std::getline(file, expectedLibrary);
    std::stringstream expected;
    expected << file.rdbuf();
    if (expectedLibrary + '\n' != library) {
        std::cout << "The C library's functions differ from those of the stored digests.\n";
        return kSkipped;
    }
    if (expected.str() != results) {
        std::cout << "The results differ from the stored digests:\n" << expected.str();
        return 1;
    }
    return 0;
}

} // namespace test

#endif
