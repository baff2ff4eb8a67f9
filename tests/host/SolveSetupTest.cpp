#include <functional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "MillText.h"
#include "app/SolveSetup.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "text/Fingerprint.h"
#include "text/InputError.h"

namespace
{

using host::PlanRequest;
using host::SolveOptions;

host::Toolpath TwoOperations()
{
    host::Toolpath path;
    path.file = "part.cl";
    for (const char* name : {"ROUGH", "FINISH"}) {
        host::Operation operation;
        operation.name = name;
        operation.firstPoint = path.points.size();
        operation.toolLength = path.operations.empty() ? 40.0 : 60.0;
        path.operations.push_back(operation);
        host::ToolPoint point;
        point.operation = static_cast<int>(path.operations.size()) - 1;
        point.direction = {0, 0, 1};
        path.points.push_back(point);
    }
    return path;
}

class SolveSetup : public testing::Test
{
  protected:
    SolveSetup()
        : machine(host::AssembleMachine(host::ReadMachine(
              test::MillText() + "\n[[stream]]\nid = 7\ntool = \"spindle\"\npart = \"table\"\n",
              "mill.toml"))),
          path(TwoOperations())
    {}

    PlanRequest Request() { return host::RequestFrom(options, machine, path, warnings); }
    /// What the request is refused with.
    std::string Refusal()
    {
        try {
            Request();
        } catch (const host::InputError& error) {
            return error.what();
        }
        return "";
    }

    host::LoadedMachine machine;
    host::Toolpath path;
    SolveOptions options;
    std::ostringstream warnings;
};

TEST_F(SolveSetup, HasTheDefaultsThatItsHelpStates)
{
    const PlanRequest request = Request();
    EXPECT_EQ(request.options.tolerances.linear, 0.01);
    EXPECT_EQ(request.options.tolerances.angle_deg, 0.05);
    EXPECT_NEAR(request.options.poleCone, 0.034906585039886592, 1e-17); // 2 deg
    EXPECT_EQ(request.options.start, host::StartPolicy::Home);
    EXPECT_EQ(request.options.rewind, host::RetractPolicy::Refuse);
    EXPECT_EQ(request.options.branchChange, host::RetractPolicy::Refuse);
    EXPECT_EQ(request.options.retract, 50.0);
    EXPECT_FALSE(request.options.preference.has_value());
    EXPECT_TRUE(request.options.insertsRows);
    EXPECT_EQ(request.settings.tolerance, 1e-12);
    EXPECT_EQ(request.settings.maxIterations, 60);
    EXPECT_EQ(request.toolLengths, (std::vector<double>{40, 60}));
    EXPECT_TRUE(request.toolXAxes.empty()); // five axes leave no turn open
    EXPECT_EQ(warnings.str(), "");
}

TEST_F(SolveSetup, GivesOperationsTheirStreams)
{
    options.operationStreams = {"FINISH=7"};
    const PlanRequest request = Request();
    ASSERT_EQ(request.streams.size(), 2U);
    EXPECT_EQ(request.streams[0]->id, 1);
    EXPECT_EQ(request.streams[1]->id, 7);
}

TEST_F(SolveSetup, TakesOneToolLengthForAll)
{
    options.toolLength = 75.0;
    EXPECT_EQ(Request().toolLengths, (std::vector<double>{75, 75}));
}

TEST_F(SolveSetup, HoldsLockedAxesWhereTheyArePut)
{
    options.locks = {"A=-30", "X=12.5"};
    Request();
    for (const host::Axis& axis : machine.axes) {
        const bool isHeld = axis.name == "A" || axis.name == "X";
        EXPECT_EQ(axis.joint->IsLocked(), isHeld) << axis.name;
    }
    EXPECT_NEAR(machine.axes[3].joint->GetCurValue(), -0.52359877559829887, 1e-16); // -30 deg
    EXPECT_EQ(machine.axes[0].joint->GetCurValue(), 12.5);
}

TEST_F(SolveSetup, PrefersOneSideOfAnAxis)
{
    options.prefer = "A-";
    const PlanRequest request = Request();
    ASSERT_TRUE(request.options.preference.has_value());
    EXPECT_EQ(request.options.preference->axis, &machine.axes[3]);
    EXPECT_FALSE(request.options.preference->isPositive);
}

TEST_F(SolveSetup, SaysWhatTheSolverDoesNotPromise)
{
    options.angleTolerance_deg = 0.0005;
    Request();
    EXPECT_EQ(warnings.str(),
              "warning: the solver takes a direction as met within 0.001 deg, whatever the "
              "tolerance; a closer one is not promised\n");
}

struct Fault
{
    const char* name;
    std::function<void(SolveOptions&)> make;
    const char* sentence;
};

void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.name;
}

class SolveOptionFault : public SolveSetup, public testing::WithParamInterface<Fault>
{};

TEST_P(SolveOptionFault, IsRefusedByNameWithASentence)
{
    GetParam().make(options);
    EXPECT_EQ(Refusal(), GetParam().sentence);
}

INSTANTIATE_TEST_SUITE_P(
    All, SolveOptionFault,
    testing::Values(Fault{"Linear", [](SolveOptions& o) { o.linearTolerance = 0.0; },
                          "--linear-tol: 0 is not greater than 0; correct it"},
                    Fault{"Angle", [](SolveOptions& o) { o.angleTolerance_deg = -1.0; },
                          "--angle-tol: -1 is not greater than 0; correct it"},
                    Fault{
                        "Cone", [](SolveOptions& o) { o.poleCone_deg = 60.0; },
                        "--pole-cone: 60 deg is no cone around the pole any more; give at most 45"},
                    Fault{"Start", [](SolveOptions& o) { o.start = "away"; },
                          "--start: \"away\" is not known; give home or free"},
                    Fault{"Rewind", [](SolveOptions& o) { o.rewind = "no"; },
                          "--rewind: \"no\" is not known; give rapids or retract"},
                    Fault{"Weight", [](SolveOptions& o) { o.weights.pole = -2.0; },
                          "--weight-pole: -2 is below 0; correct it"},
                    Fault{"PreferSign", [](SolveOptions& o) { o.prefer = "A"; },
                          "--prefer: \"A\" is no axis with a sign; write for instance A+ or A-"},
                    Fault{"PreferAxis", [](SolveOptions& o) { o.prefer = "Q+"; },
                          "--prefer: there is no axis \"Q\"; the machine has X, Y, Z, A, C"},
                    Fault{"LockAxis", [](SolveOptions& o) { o.locks = {"Q=1"}; },
                          "--lock: there is no axis \"Q\"; the machine has X, Y, Z, A, C"},
                    Fault{"LockLimit", [](SolveOptions& o) { o.locks = {"A=31"}; },
                          "--lock: A 31 deg is outside its limits -120 to 30; hold it within them"},
                    Fault{"LockNumber", [](SolveOptions& o) { o.locks = {"A=up"}; },
                          "--lock: \"up\" is not a number; write NAME=VALUE"},
                    Fault{"Tolerance", [](SolveOptions& o) { o.tolerance = 0.0; },
                          "--tolerance: 0 is not greater than 0; correct it"},
                    Fault{"Iterations", [](SolveOptions& o) { o.maxIterations = 0; },
                          "--max-iterations: 0 is not between 1 and 100000; correct it"},
                    Fault{"Roll", [](SolveOptions& o) { o.toolRoll = "loose"; },
                          "--tool-roll: \"loose\" is not known; give fixed, feed, search or open"},
                    Fault{"RollReference",
                          [](SolveOptions& o) {
                              o.rollReference = {0, 0, 0};
                          },
                          "--tool-roll-reference: this is no direction; give it as x,y,z in part "
                          "coordinates"}),
    [](const auto& tested) { return std::string(tested.param.name); });

// The run's fingerprint -----------------------------------------------------------------------

TEST(Fingerprint, IsThatOfThePiecesAndTheirLengths)
{
    // FNV-1a, worked out apart, over each piece's bytes and its length in eight bytes.
    host::Fingerprint none;
    EXPECT_EQ(none.Hex(), "cbf29ce484222325");
    host::Fingerprint one;
    one.Add("ab");
    one.Add("c");
    host::Fingerprint other;
    other.Add("a");
    other.Add("bc");
    EXPECT_EQ(one.Hex(), "5091916f8ceeb7b0");
    EXPECT_EQ(other.Hex(), "d3effa61b782f8b8");
}

} // namespace
