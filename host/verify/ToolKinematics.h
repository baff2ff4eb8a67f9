#ifndef TRUNNION_HOST_VERIFY_TOOL_KINEMATICS_H
#define TRUNNION_HOST_VERIFY_TOOL_KINEMATICS_H

#include <cstddef>
#include <optional>
#include <vector>

#include <IkJtState.h>

#include "geometry/CutterLocation.h"
#include "machine/LoadedMachine.h"

namespace host
{

/// The tool of an operation: the stream that holds it, and how long it is.
struct SeatedTool
{
    const LoadedStream* stream{nullptr};
    double length{0.0}; //!< from the mount to the tool's end [length]

    bool operator==(const SeatedTool& other) const
    {
        return stream == other.stream && length == other.length;
    }
};

/// Where a tool stands for given joint values, by forward kinematics alone. Axes that are not among
/// these values stand where they start. A machine has one of these at a time: it holds one tool.
class ToolKinematics
{
  public:
    ToolKinematics(const LoadedMachine& ofMachine, std::vector<const Axis*> ofJoints);

    const std::vector<const Axis*>& Axes() const { return axes; }
    /// Tells which tool the following poses are of.
    void Seat(const SeatedTool& tool);
    /// In part coordinates. @param joints in the order of the constructor's axes
    CutterLocation ToolAt(const std::vector<double>& joints);

  private:
    const LoadedMachine& machine;
    std::vector<const Axis*> axes;
    std::optional<SeatedTool> seated;
    IkJtStateVector states;   // of the stream that holds the tool
    std::vector<int> stateOf; // index of each axis's state; less than 0 where it has none
};

} // namespace host

#endif
