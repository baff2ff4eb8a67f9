#include "app/VerifyArguments.h"

#include <string>

#include "app/Arguments.h"
#include "geometry/Units.h"
#include "motion/Tolerances.h"
#include "text/Numbers.h"

namespace host
{

namespace
{

/// Takes numbers that are finite and greater than 0, or just not less.
CLI::Validator NumberFromZero(bool isZeroTaken)
{
    const std::string description = isZeroTaken ? "0 or more" : "greater than 0";
    return {[=](const std::string& text) {
                const auto number = ParseNumber(text);
                const bool isTaken = number && (*number > 0.0 || (isZeroTaken && *number == 0.0));
                return isTaken ? std::string() : "a number is needed, " + description;
            },
            std::string()};
}

} // namespace

void AddVerify(CLI::App& app, VerifyOptions& options)
{
    constexpr int kMostSamples = 1000;
    const auto usual = [](LengthUnit unit) {
        return DecimalText(DefaultTolerances(unit).linear) + " " + std::string(Symbol(unit));
    };
    CLI::App* const verify = app.add_subcommand(
        "verify", "Check a joint table against its toolpath, by forward kinematics alone");
    AddMachine(*verify, options.machine);
    AddToolpath(*verify, options.toolpath)->required();
    verify->add_option("JOINTS", options.table, "The joint table (CSV)")->required();
    verify
        ->add_option("--operation-stream", options.operationStreams, "The stream of one operation")
        ->type_name("NAME=ID");
    verify
        ->add_option("--linear-tol", options.linearTolerance,
                     "How far the tool may be off the points and the straight lines between them; "
                     "otherwise " +
                         usual(LengthUnit::Millimetre) + " or " + usual(LengthUnit::Inch))
        ->check(NumberFromZero(false))
        ->type_name("LENGTH");
    verify
        ->add_option("--angle-tol", options.angleTolerance_deg,
                     "How far its direction may be off; otherwise " +
                         DecimalText(Tolerances{}.angle_deg) + " degrees")
        ->check(NumberFromZero(false))
        ->type_name("DEG");
    verify
        ->add_option("--tool-length", options.toolLength,
                     "From the tool's seat to its end; otherwise the toolpath's own, or 0")
        ->check(NumberFromZero(true))
        ->type_name("LENGTH");
    verify
        ->add_option("--samples", options.samples, "How many places are looked at between two rows")
        ->check(CLI::Range(0, kMostSamples))
        ->capture_default_str()
        ->type_name("N");
    verify->footer(kExitCodes);
}

} // namespace host
