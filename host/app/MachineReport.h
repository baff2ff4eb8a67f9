#ifndef TRUNNION_HOST_APP_MACHINE_REPORT_H
#define TRUNNION_HOST_APP_MACHINE_REPORT_H

#include <ostream>
#include <string>

#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"

namespace host
{

/// What a machine file was understood to say, for whoever wrote it.
class MachineReport
{
  public:
    MachineReport(const LoadedMachine& ofMachine, const ShownUnits& inUnits, std::ostream& to);

    /// Of its streams, all or the one that is given.
    void Print(const LoadedStream* only) const;

  private:
    void PrintAxes() const;
    void PrintStream(const LoadedStream& stream) const;
    std::string MotionText(const Axis& axis) const;
    std::string UsesOf(std::size_t axis) const;
    std::string ChainText(const std::vector<std::size_t>& axes, const std::string& end) const;

    const LoadedMachine& machine;
    ShownUnits units;
    std::ostream& out;
};

} // namespace host

#endif
