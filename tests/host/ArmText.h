#ifndef TRUNNION_TESTS_HOST_ARM_TEXT_H
#define TRUNNION_TESTS_HOST_ARM_TEXT_H

#include <string>

namespace test
{

/// A six-axis arm of the dimensions of the SixAxisArm fixture with a spindle that it can point down
/// at a bench. At zero its forearm and the spindle lie level, along x; the x axis of the tool then
/// points up.
///
///   base -- J1 (z) -- J2 (y, 150 out, 400 up) -- J3 (y, 450 up) -- J4 (x, 420 out, 50 up) -- J5
///   (y)
///     |       '-- J6 (x) -- spindle (80 out)
///     '---- bench (800 out, 100 up)
/// @param j6Limits in degrees, for instance "-360, 360"
/// @param tableLimits of a table, C, that carries the bench and turns about z in its middle, in
/// degrees; without them there is none
inline std::string ArmText(const std::string& j6Limits, const std::string& tableLimits = "")
{
    const auto axis = [](const std::string& name, const std::string& parent,
                         const std::string& direction, const std::string& point,
                         const std::string& limits) {
        return "[[axis]]\nname = \"" + name + "\"\nparent = \"" + parent +
               "\"\ntype = \"rotary\"\ndirection = [" + direction + "]\npoint = [" + point +
               "]\nlimits = [" + limits + "]\n\n";
    };
    const auto mount = [](const std::string& name, const std::string& kind,
                          const std::string& parent, const std::string& frame) {
        return "[[mount]]\nname = \"" + name + "\"\nkind = \"" + kind + "\"\nparent = \"" + parent +
               "\"\n" + frame + "\n";
    };
    const bool hasTable = !tableLimits.empty();
    return "[machine]\nname = \"Arm\"\nlength = \"mm\"\nangle = \"deg\"\n\n" +
           axis("J1", "base", "0, 0, 1", "0, 0, 0", "-166, 166") +
           axis("J2", "J1", "0, 1, 0", "150, 0, 400", "-86, 115") +
           axis("J3", "J2", "0, 1, 0", "150, 0, 850", "-115, 137") +
           axis("J4", "J3", "1, 0, 0", "570, 0, 900", "-190, 190") +
           axis("J5", "J4", "0, 1, 0", "570, 0, 900", "-120, 120") +
           axis("J6", "J5", "1, 0, 0", "570, 0, 900", j6Limits) +
           (hasTable ? axis("C", "base", "0, 0, 1", "800, 0, 0", tableLimits) : "") +
           mount("spindle", "tool", "J6",
                 "origin = [650, 0, 900]\nz_axis = [-1, 0, 0]\nx_axis = [0, 0, 1]\n") +
           mount("bench", "part", hasTable ? "C" : "base",
                 "origin = [800, 0, 100]\nz_axis = [0, 0, 1]\nx_axis = [1, 0, 0]\n") +
           "[[stream]]\nid = 1\ntool = \"spindle\"\npart = \"bench\"\n";
}

} // namespace test

#endif
