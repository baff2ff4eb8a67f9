#include "machine/LoadedMachine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "geometry/Frame.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "machine/UrdfFile.h"
#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/Utf8.h"

namespace host
{

namespace
{

constexpr std::uintmax_t kMaxMachineBytes = 16UL * 1024 * 1024;

bool IsUrdf(const std::filesystem::path& path, std::string_view text)
{
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return path.extension() == ".urdf" || (first != std::string_view::npos && text[first] == '<');
}

} // namespace

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
    if (Column(tip->GetOrigFrame(), 3)[2] != -length) {
        tip->SetOrigFrame(IkXformMat::Translate(0.0, 0.0, -length));
    }
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

std::string ReadMachineText(const std::filesystem::path& path)
{
    return ReadWholeFile(path, kMaxMachineBytes);
}

MachineDescription DescriptionFromText(const std::string& text, const std::filesystem::path& path,
                                       const MountLinks& links)
{
    const std::string file = path.string();
    if (IsUrdf(path, text)) {
        return ReadUrdf(text, file, links);
    }
    if (links.tool || links.part) {
        throw InputError(file, "--tool-link and --part-link name links of a URDF, and this machine "
                               "has mounts of its own; leave them out");
    }
    return ReadMachine(text, file);
}

MachineDescription DescribeMachine(const std::filesystem::path& path, const MountLinks& links)
{
    return DescriptionFromText(ReadMachineText(path), path, links);
}

LoadedMachine LoadMachine(const std::filesystem::path& path, const MountLinks& links)
{
    return AssembleMachine(DescribeMachine(path, links));
}

} // namespace host
