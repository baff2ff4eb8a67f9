#include "Machine.h"

#include <algorithm>
#include <stdexcept>

namespace bindings
{

Machine::~Machine()
{
    LetGo();
}

/// An empty machine takes this one's place: the library's way to destroy a machine without its
/// tree.
void Machine::LetGo()
{
    machine = IkMachine();
}

void Machine::Refill()
{
    LetGo();
    machine.SetBaseNode(base.get());
    for (const std::shared_ptr<Stream>& stream : streams) {
        machine.AddStream(&stream->Get());
    }
}

void Machine::SetBaseNode(const std::shared_ptr<IkNode>& node)
{
    if (node != nullptr && TreeHandleOf(node.get()) == nullptr) {
        throw std::invalid_argument("the part space of a stream is no base");
    }
    base = node;
    machine.SetBaseNode(node.get());
}

void Machine::AddStream(const std::shared_ptr<Stream>& stream)
{
    if (std::find(streams.begin(), streams.end(), stream) != streams.end()) {
        throw std::invalid_argument("the machine has this stream already");
    }
    streams.push_back(stream);
    Refill();
}

void Machine::RemoveStream(int id)
{
    const auto found =
        std::find_if(streams.begin(), streams.end(), [id](const std::shared_ptr<Stream>& stream) {
            return stream->Get().GetId() == id;
        });
    if (found != streams.end()) {
        const std::shared_ptr<Stream> removed = *found; // goes after the machine has let go of it
        streams.erase(found);
        Refill();
    }
}

void Machine::Reset()
{
    const std::vector<std::shared_ptr<Stream>> removed = std::move(streams);
    const std::shared_ptr<IkNode> root = std::move(base);
    streams.clear();
    base = nullptr;
    LetGo();
}

} // namespace bindings
