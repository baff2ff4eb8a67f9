#ifndef TRUNNION_BENCH_SUBJECT_H
#define TRUNNION_BENCH_SUBJECT_H

#include <filesystem>
#include <string>
#include <vector>

#include <IkEndState.h>
#include <IkStream.h>

#include "machine/LoadedMachine.h"

namespace bench
{

/// Values of a stream's joints, in the stream's order [length] or [rad].
using JointValues = std::vector<double>;

enum class Kind { ThreeAxes, FiveAxes, Arm, NineJoints, Serial };

/// A machine that is measured, and what a target says of the tool on it.
struct Subject
{
    std::string name;
    Kind kind{Kind::FiveAxes};
    bool isWhole{false}; //!< the turn about the tool counts too
    JointValues home;    //!< where cold solves start
    host::LoadedMachine machine;

    IkStream& Stream() const { return *machine.streams.front().stream; }
    int JointCount() const { return static_cast<int>(home.size()); }
    int NodeCount() const; //!< of both chains
    IkJtStateVector States(const JointValues& values) const;
    /// Where the tool stands, as a target that the joints at `values` meet.
    IkEndState TargetAt(const JointValues& values) const;
};

/// The bundled five-axis machines.
std::vector<Subject> FiveAxisSubjects(const std::filesystem::path& samples);
Subject ThreeAxisSubject();
Subject ArmSubject();
/// An arm on a track with a positioner; its file is among the program's own.
Subject NineJointSubject(const std::filesystem::path& file);
/// A chain of `joints` joints on one side, three linear ones and then rotary ones across each
/// other. Only the number of joints differs from one to the next.
Subject SerialSubject(int joints);

} // namespace bench

#endif
