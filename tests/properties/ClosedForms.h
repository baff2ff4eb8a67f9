#ifndef TRUNNION_TESTS_PROPERTIES_CLOSED_FORMS_H
#define TRUNNION_TESTS_PROPERTIES_CLOSED_FORMS_H

#include <array>
#include <string>
#include <vector>

// Forward kinematics of the fixture machines, written out by hand from their drawings: rotations
// are applied to vectors one after the other, and no matrix is formed.
namespace test
{

struct ToolPose
{
    std::array<double, 3> position;  // part coordinates [mm]
    std::array<double, 3> direction; // of the tool's z axis, part coordinates
};

/// `joints` in the order of the fixture's stream, [mm] and [rad].
ToolPose ClosedForm(const std::string& fixture, const std::vector<double>& joints);

} // namespace test

#endif
