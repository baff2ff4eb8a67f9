#ifndef TRUNNION_TESTS_HOST_MILL_TEXTS_H
#define TRUNNION_TESTS_HOST_MILL_TEXTS_H

#include <string>

#include "MillText.h"
#include "machine/LoadedMachine.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"

// Five-axis mills beside the tilting-table one of MillText.h, with limits of the test's own.
namespace test
{

constexpr const char* kUnlimited = "unlimited = true";

inline std::string AxisText(const std::string& name, const std::string& parent, bool isRotary,
                            const std::string& direction, const std::string& rest)
{
    return "[[axis]]\nname = \"" + name + "\"\nparent = \"" + parent + "\"\ntype = \"" +
           (isRotary ? "rotary" : "linear") + "\"\ndirection = " + direction + "\n" + rest + "\n";
}

inline std::string LinearText(const std::string& name, const std::string& parent,
                              const std::string& direction)
{
    return AxisText(name, parent, false, direction, "limits = [-1000, 1000]");
}

inline std::string RotaryText(const std::string& name, const std::string& parent,
                              const std::string& direction, const std::string& point,
                              const std::string& limits)
{
    return AxisText(name, parent, true, direction, "point = " + point + "\n" + limits);
}

inline std::string MountText(const std::string& kind, const std::string& parent,
                             const std::string& origin)
{
    return "[[mount]]\nname = \"" + std::string(kind == "tool" ? "spindle" : "table") +
           "\"\nkind = \"" + kind + "\"\nparent = \"" + parent + "\"\norigin = " + origin +
           "\nz_axis = [0, 0, 1]\nx_axis = [1, 0, 0]\n";
}

inline std::string WholeMill(const std::string& axes, const std::string& mounts)
{
    return "[machine]\nname = \"Mill\"\nlength = \"mm\"\nangle = \"deg\"\n" + axes + mounts +
           "[[stream]]\nid = 1\ntool = \"spindle\"\npart = \"table\"\n";
}

/// A head that turns about z and tilts about y, over a quill W beside Z: an axis more than position
/// and direction take, and two that direct the tool.
inline std::string QuillText()
{
    return WholeMill(LinearText("X", "base", "[1, 0, 0]") + LinearText("Y", "X", "[0, 1, 0]") +
                         LinearText("Z", "Y", "[0, 0, 1]") + LinearText("W", "Z", "[0, 0, 1]") +
                         RotaryText("C", "W", "[0, 0, 1]", "[0, 0, 180]", "limits = [-400, 400]") +
                         RotaryText("B", "C", "[0, 1, 0]", "[0, 0, 180]", "limits = [-100, 100]"),
                     MountText("tool", "B", "[0, 0, 0]") + MountText("part", "base", "[0, 0, 0]"));
}

/// The part tilts about x, the head turns about z and tilts about y: an axis to spare, and no two
/// that direct the tool by themselves.
inline std::string TiltingPartText()
{
    return WholeMill(LinearText("X", "base", "[1, 0, 0]") + LinearText("Y", "X", "[0, 1, 0]") +
                         LinearText("Z", "Y", "[0, 0, 1]") +
                         RotaryText("C", "Z", "[0, 0, 1]", "[0, 0, 180]", "limits = [-400, 400]") +
                         RotaryText("B", "C", "[0, 1, 0]", "[0, 0, 180]", "limits = [-100, 100]") +
                         RotaryText("A", "base", "[1, 0, 0]", "[0, 0, -50]", "limits = [-60, 60]"),
                     MountText("tool", "B", "[0, 0, 0]") + MountText("part", "A", "[0, 0, 0]"));
}

/// base -- X -- Y -- Z -- spindle; base -- A (about x, 120 below) -- C (about z) -- table (100
/// below): d = (sin A sin C, sin A cos C, cos A).
inline std::string TableTableText(const std::string& limitsOfA, const std::string& limitsOfC)
{
    return WithLine(WithLine(MillText(), 41, limitsOfC), 33, limitsOfA);
}

/// base -- Y -- Z -- B (about y, 150 above the tool's end) -- spindle; base -- X (carries the part,
/// the other way) -- C (about z) -- table (50 below): d = (sin B cos C, -sin B sin C, cos B).
inline std::string HeadTableText(const std::string& limitsOfB, const std::string& limitsOfC)
{
    return WholeMill(LinearText("Y", "base", "[0, 1, 0]") + LinearText("Z", "Y", "[0, 0, 1]") +
                         RotaryText("B", "Z", "[0, 1, 0]", "[0, 0, 150]", limitsOfB) +
                         LinearText("X", "base", "[-1, 0, 0]") +
                         RotaryText("C", "X", "[0, 0, 1]", "[0, 0, 0]", limitsOfC),
                     MountText("tool", "B", "[0, 0, 0]") + MountText("part", "C", "[0, 0, -50]"));
}

/// base -- X -- Y -- Z -- C (about z) -- A (about x, 180 above the tool's end) -- spindle; the
/// table stands still: d = (sin C sin A, -cos C sin A, cos A).
inline std::string HeadHeadText(const std::string& limitsOfC, const std::string& limitsOfA)
{
    return WholeMill(LinearText("X", "base", "[1, 0, 0]") + LinearText("Y", "X", "[0, 1, 0]") +
                         LinearText("Z", "Y", "[0, 0, 1]") +
                         RotaryText("C", "Z", "[0, 0, 1]", "[0, 0, 180]", limitsOfC) +
                         RotaryText("A", "C", "[1, 0, 0]", "[0, 0, 180]", limitsOfA),
                     MountText("tool", "A", "[0, 0, 0]") + MountText("part", "base", "[0, 0, 0]"));
}

/// As above with B about the line between x and z in the place of A:
/// d = Rz(C) ((1 - cos B) / 2, -sin B / sqrt 2, (1 + cos B) / 2).
inline std::string NutatingHeadText(const std::string& limitsOfC, const std::string& limitsOfB)
{
    return WholeMill(LinearText("X", "base", "[1, 0, 0]") + LinearText("Y", "X", "[0, 1, 0]") +
                         LinearText("Z", "Y", "[0, 0, 1]") +
                         RotaryText("C", "Z", "[0, 0, 1]", "[0, 0, 180]", limitsOfC) +
                         RotaryText("B", "C", "[1, 0, 1]", "[0, 0, 180]", limitsOfB),
                     MountText("tool", "B", "[0, 0, 0]") + MountText("part", "base", "[0, 0, 0]"));
}

inline host::LoadedMachine MachineFrom(const std::string& text)
{
    return host::AssembleMachine(host::ReadMachine(text, "mill.toml"));
}

} // namespace test

#endif
