#ifndef TRUNNION_PYTHON_MODEL_H
#define TRUNNION_PYTHON_MODEL_H

#include <cstddef>
#include <filesystem>
#include <vector>

#include "Arrays.h"
#include "machine/LoadedMachine.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineDescription.h"
#include "solve/PointSolver.h"

namespace bindings
{

/// Where the solve for a pose starts.
enum class StartFrom {
    Previous, //!< from the last solution before it, at first from the start that is given
    Given,    //!< from the start that is given
    Search    //!< as Previous, and from many starts where that leads nowhere
};

/// What poses are solved for, all of them alike.
struct InverseOptions
{
    bool isLimited{true};
    double toolLength{0.0};         //!< [length]
    std::vector<std::size_t> locks; //!< axes of the stream that stay where their start has them
    host::SolverSettings settings;
    StartFrom from{StartFrom::Previous};
};

/// A number for each joint and pose, NaN where a solve has failed.
struct SolvedPoses
{
    std::vector<double> joints;
    std::vector<char> converged;
    std::vector<double> positionError;  //!< [length]
    std::vector<double> directionError; //!< [rad]
};

/// A machine that was read from a file. Its joints stand at their initial values, its locks are
/// off and its tools have no length whenever nobody is at work on it.
class Model
{
  public:
    explicit Model(const host::MachineDescription& ofMachine)
        : description(ofMachine), machine(host::AssembleMachine(ofMachine))
    {}

    const host::MachineDescription& Description() const { return description; }
    const host::LoadedMachine& Get() const { return machine; }
    const host::LoadedStream& StreamAt(std::size_t index) const;
    /// The index of the stream of this id; throws host::InputError where there is none.
    std::size_t IndexOf(int id);

    /// The poses of the tool in part coordinates, a frame of 16 numbers or a position and a
    /// direction for each row of joints.
    std::vector<double> Forward(std::size_t stream, const Rows& joints, double toolLength,
                                bool asFrames);
    /// @param poses 6 numbers in a row for position and direction, 9 where the x axis counts too
    /// @param starts one row for all poses, or one for each
    SolvedPoses Inverse(std::size_t stream, const Rows& poses, const Rows& starts,
                        const InverseOptions& options);
    /// The distinct ways to stand at one pose, a row each, as host::FindBranches looks for them;
    /// locked axes stay where the start has them.
    SolvedPoses Branches(std::size_t stream, const Rows& pose, const Rows& start,
                         const InverseOptions& options);
    /// Why a pose of 6 numbers is not reached.
    std::string Diagnose(std::size_t stream, const Rows& pose, const Rows& start, double toolLength,
                         host::AngleUnit unit);

  private:
    host::MachineDescription description;
    host::LoadedMachine machine;
};

} // namespace bindings

#endif
