#ifndef TRUNNION_PYTHON_CHAIN_H
#define TRUNNION_PYTHON_CHAIN_H

#include <memory>
#include <vector>

#include <IkChain.h>

#include "Handles.h"

namespace bindings
{

/// A chain that keeps its nodes alive.
class Chain
{
  public:
    const IkChain& Get() const { return chain; }
    IkChain& Get() { return chain; }

    /// Throws std::invalid_argument for the part space of a stream.
    void AddNode(const std::shared_ptr<IkNode>& node, bool atHead);
    void FillFromBase2Node(const std::shared_ptr<IkNode>& node);
    void RemoveTail();
    void Reset();
    /// Takes out every occurrence.
    void Remove(const IkNode& node);

  private:
    void Keep();

    IkChain chain;
    std::vector<std::shared_ptr<IkNode>> kept;
};

} // namespace bindings

#endif
