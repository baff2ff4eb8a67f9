#include "machine/LoadedMachine.h"

#include <algorithm>
#include <cmath>

#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "text/InputError.h"

namespace host
{

bool Axis::IsUnlimited() const
{
    return std::isinf(joint->GetLowBound()) && std::isinf(joint->GetHiBound());
}

void LoadedMachine::MoveToInitial() const
{
    for (const Axis& axis : axes) {
        axis.joint->SetCurValue(axis.initial);
    }
}

void LoadedStream::SetToolLength(double length) const
{
    tip->SetOrigFrame(IkXformMat::Translate(0.0, 0.0, -length));
}

LoadedStream& LoadedMachine::StreamWithId(std::optional<int> id)
{
    if (!id) {
        return streams.front();
    }
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [id](const LoadedStream& stream) { return stream.id == *id; });
    if (found == streams.end()) {
        std::string known;
        for (const LoadedStream& stream : streams) {
            known += (known.empty() ? "" : ", ") + std::to_string(stream.id);
        }
        throw InputError(file, "there is no stream " + std::to_string(*id) +
                                   " in this machine; choose from: " + known);
    }
    return *found;
}

std::vector<const Axis*> LoadedMachine::AxesOf(const LoadedStream& stream) const
{
    std::vector<const Axis*> moved;
    std::transform(stream.axes.begin(), stream.axes.end(), std::back_inserter(moved),
                   [this](std::size_t index) { return &axes[index]; });
    return moved;
}

LoadedMachine LoadMachine(const std::filesystem::path& path)
{
    return AssembleMachine(ReadMachineFile(path));
}

} // namespace host
