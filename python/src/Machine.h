#ifndef TRUNNION_PYTHON_MACHINE_H
#define TRUNNION_PYTHON_MACHINE_H

#include <memory>
#include <vector>

#include <IkMachine.h>

#include "Stream.h"

namespace bindings
{

/// A machine that shares its tree and its streams with Python instead of owning them alone: what
/// Python refers to outlives it.
class Machine
{
  public:
    Machine() = default;
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    IkMachine& Get() { return machine; }
    void SetBaseNode(const std::shared_ptr<IkNode>& node);
    /// Throws std::invalid_argument for a stream that it has.
    void AddStream(const std::shared_ptr<Stream>& stream);
    /// The first of this id, if any.
    void RemoveStream(int id);
    const std::vector<std::shared_ptr<Stream>>& Streams() const { return streams; }
    void Reset();

  private:
    void LetGo();
    void Refill();

    IkMachine machine;
    std::shared_ptr<IkNode> base;
    std::vector<std::shared_ptr<Stream>> streams;
};

} // namespace bindings

#endif
