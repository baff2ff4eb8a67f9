#ifndef TRUNNION_MACHINE_COUNTED_H
#define TRUNNION_MACHINE_COUNTED_H

#include <cmath>

namespace trunnion
{

/// Thrown out of a decomposition whose iteration does not end.
struct Unending
{};

/// A double with which a decomposition computes as with any other, to the last bit, except that the
/// magnitudes it takes are counted. It takes them only to test for convergence, without a bound of
/// its own, and where intermediate values underflow it may go on testing for ever.
class Counted
{
  public:
    Counted() = default;
    Counted(double x) : value(x) {}
    operator double() const { return value; }
    Counted& operator+=(double x)
    {
        value += x;
        return *this;
    }
    Counted& operator/=(double x)
    {
        value /= x;
        return *this;
    }

    /// Allows a decomposition of `columns` columns its tests. A sweep takes some six a column, so
    /// that is more than a hundred sweeps for each singular value, where a handful is usual.
    static void Allow(int columns);

    friend double abs(const Counted& x);
    // Columns begin with a zero and Jacobians are full of them, where the hypotenuse is the other
    // side by definition.
    friend double hypot(const Counted& x, const Counted& y)
    {
        if (y.value == 0.0) {
            return std::fabs(x.value);
        }
        return x.value == 0.0 ? std::fabs(y.value) : std::hypot(x.value, y.value);
    }
    friend double hypot(const Counted& x, double y) { return hypot(x, Counted(y)); }

  private:
    double value{0.0};
};

// Beside the thread's own block: asked for at each test, it must not take a call.
extern thread_local long countedTestsLeft [[gnu::tls_model("initial-exec")]];

inline void Counted::Allow(int columns)
{
    countedTestsLeft = 1000L * columns * columns;
}

inline double abs(const Counted& x)
{
    if (--countedTestsLeft < 0) {
        throw Unending();
    }
    return std::fabs(x.value);
}

} // namespace trunnion

#endif
