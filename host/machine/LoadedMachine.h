#ifndef TRUNNION_HOST_MACHINE_LOADED_MACHINE_H
#define TRUNNION_HOST_MACHINE_LOADED_MACHINE_H

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <IkChain.h>
#include <IkJoint.h>
#include <IkMachine.h>
#include <IkStream.h>
#include <IkXformMat.h>

#include "geometry/Units.h"
#include "machine/MachineDescription.h"
#include "machine/MountLinks.h"

namespace host
{

/// An axis as its file names it, and the joint that stands for it. The joint has its zero at 0; the
/// axis starts at `initial`.
struct Axis
{
    std::string name;
    bool isRotary{false};
    Vec3 direction{};    //!< of its body's motion with all axes at 0, machine coordinates; length 1
    Vec3 point{};        //!< on the axis of a rotary one, likewise [length]
    double initial{0.0}; //!< [length] or [rad]
    std::string word;    //!< of the axis in G-code
    int wordSign{1};     //!< of the word, against the motion of the body
    IkJoint* joint{nullptr};
    std::optional<std::size_t> parent; //!< the axis that carries it; nothing: the base

    bool IsUnlimited() const;
};

/// What holds a tool or a part.
struct Mount
{
    std::string name;
    MountKind kind{MountKind::Tool};
    std::optional<std::size_t> parent; //!< the axis that carries it; nothing: the base
    IkXformMat frame;                  //!< in machine coordinates with all axes at 0
};

/// A body that is only looked at.
struct Visual
{
    std::string name;
    std::optional<std::size_t> parent; //!< the axis that carries it; nothing: the base
    Shape shape{Shape::Box};
    std::vector<double> size; //!< as its shape wants it [length]
    IkXformMat frame;         //!< in machine coordinates with all axes at 0
    std::optional<Color> color;
};

/// A tool and a part that it works on.
struct LoadedStream
{
    int id{0};
    std::string tool;
    std::string part;
    std::unique_ptr<IkChain> toolChain;
    std::unique_ptr<IkChain> partChain;
    IkStream* stream{nullptr};         //!< the machine's
    IkBody* tip{nullptr};              //!< the tool's end, the machine's
    std::vector<std::size_t> axes;     //!< those that it moves, as the file orders them
    std::vector<std::size_t> toolAxes; //!< those that carry the tool, from the base outwards
    std::vector<std::size_t> partAxes; //!< those that carry the part, from the base outwards

    /// Puts the tool's end this far below its mount, against the mount's z axis [length].
    void SetToolLength(double length) const;
};

/// A machine ready to be solved. Owns the tree, the streams and their chains.
struct LoadedMachine
{
    std::string file;
    std::string name;
    LengthUnit length{LengthUnit::Millimetre};
    std::vector<Axis> axes;      //!< in the file's order
    std::vector<Mount> mounts;   //!< in the file's order
    std::vector<Visual> visuals; //!< in the file's order
    std::vector<LoadedStream> streams;
    std::unique_ptr<IkMachine> machine;

    /// Puts every axis where it starts.
    void MoveToInitial() const;
    /// The first stream without an id; throws InputError, listing the ids, when there is none.
    LoadedStream& StreamWithId(std::optional<int> id);
    std::vector<const Axis*> AxesOf(const LoadedStream& stream) const;
};

/// Reads a TOML file, or a URDF: a file whose name ends in .urdf or whose text begins with "<". A
/// URDF needs both links, and TOML none: InputError otherwise.
MachineDescription DescribeMachine(const std::filesystem::path& path, const MountLinks& links = {});
/// The same, assembled.
LoadedMachine LoadMachine(const std::filesystem::path& path, const MountLinks& links = {});

/// The same in two steps, for those who pass the text on. `path` says what the text is called.
std::string ReadMachineText(const std::filesystem::path& path);
MachineDescription DescriptionFromText(const std::string& text, const std::filesystem::path& path,
                                       const MountLinks& links);

} // namespace host

#endif
