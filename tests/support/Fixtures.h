#ifndef TRUNNION_TESTS_SUPPORT_FIXTURES_H
#define TRUNNION_TESTS_SUPPORT_FIXTURES_H

#include <memory>
#include <string>
#include <vector>

#include "IkMachine.h"

// The machines that the tests run over. Lengths are millimetres, angles radians.
namespace test
{

/// A machine with one stream, its chains, and its joints in the stream's order.
struct Fixture
{
    std::string name;
    std::unique_ptr<IkMachine> machine;
    std::unique_ptr<IkChain> toolChain;
    std::unique_ptr<IkChain> partChain;
    IkStream* stream{nullptr}; // the machine's
    std::vector<IkJoint*> joints;

    IkJoint& Joint(const std::wstring& wanted) const;
    /// The stream's states with these values, in the stream's order.
    IkJtStateVector States(const std::vector<double>& values) const;
    void SetJoints(const std::vector<double>& values) const;
    std::vector<double> JointValues() const;
};

Fixture ThreeAxisMill();
Fixture TableTableMill();
Fixture HeadTableMill();
Fixture HeadHeadMill();
Fixture SixAxisArm();
Fixture MillTurn();

/// All of the above: a new machine is one line here.
using FixtureMaker = Fixture (*)();
struct NamedFixture
{
    const char* name;
    FixtureMaker make;
    bool isFiveAxis;
};
inline const std::vector<NamedFixture>& AllFixtures()
{
    static const std::vector<NamedFixture> all{
        {"ThreeAxisMill", ThreeAxisMill, false}, {"TableTableMill", TableTableMill, true},
        {"HeadTableMill", HeadTableMill, true},  {"HeadHeadMill", HeadHeadMill, true},
        {"SixAxisArm", SixAxisArm, false},       {"MillTurn", MillTurn, true},
    };
    return all;
}

} // namespace test

#endif
