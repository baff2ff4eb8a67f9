#ifndef TRUNNION_HOST_PLANNER_ROTARY_PAIR_H
#define TRUNNION_HOST_PLANNER_ROTARY_PAIR_H

#include <cstddef>
#include <optional>
#include <vector>

#include "geometry/Vec3.h"
#include "solve/PointSolver.h"

namespace host
{

/// Two rotary axes that direct the tool. Seen from the part the tool's direction is
///
///   exp(u t1) exp(v t2) r
///
/// with u the axis that comes first on the way from the part to the tool, v the second, and r the
/// direction at zero. Where the direction is along u, turning about u does not turn the tool: that
/// is the pole, and t1 is free there. Elsewhere two pairs of angles give a direction, one on either
/// side of the plane of u and v: the two branches.
class RotaryPair
{
  public:
    struct Angles
    {
        double first;  //!< [rad], from -pi to pi
        double second; //!< [rad], from -pi to pi
    };

    /// Nothing unless the solver's stream has exactly two rotary axes to move, they are not
    /// parallel to each other, and the linear ones bring the tool anywhere by themselves: where
    /// they do not, as on a lathe without a Y axis, the rotary ones are needed for the position
    /// too.
    static std::optional<RotaryPair> Of(PointSolver& solver);

    std::size_t FirstAxis() const { return firstAxis; }
    std::size_t SecondAxis() const { return secondAxis; }

    /// The angles that give `direction`, of branch 1 and then of branch 2; where there are none,
    /// nothing. At the pole the first angle is any.
    std::vector<Angles> Directing(const Vec3& direction) const;
    /// The branch, 1 or 2, on which the second axis stands.
    int BranchOf(double second) const;
    /// The second angle that brings the tool nearest to `direction` where the first is given.
    double NearestSecond(const Vec3& direction, double first) const;

    /// Between `direction` and the nearer end of the pole [rad].
    double AngleToPole(const Vec3& direction) const;
    /// The least such angle on the turn that the path takes from one direction to the other [rad].
    double AngleToPole(const Vec3& from, const Vec3& to) const;
    /// Whether that angle is no more than `within` [rad]. Most directions are plainly farther away,
    /// which is quickly seen.
    bool IsNearPole(const Vec3& direction, double within) const;
    bool PassesPole(const Vec3& from, const Vec3& to, double within) const;

  private:
    bool IsPlainlyBeyond(double angle, const Vec3& direction) const;

    std::size_t firstAxis{0};
    std::size_t secondAxis{0};
    Vec3 u{};
    Vec3 v{};
    Vec3 r{};
};

} // namespace host

#endif
