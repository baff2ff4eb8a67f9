#ifndef TRUNNION_TESTS_SUPPORT_CHAINS_H
#define TRUNNION_TESTS_SUPPORT_CHAINS_H

#include <vector>

#include "IkChain.h"

// Chains as lists of nodes, and back.
namespace test
{

using Nodes = std::vector<IkNode*>;

inline Nodes NodesOf(const IkChain& chain)
{
    Nodes nodes;
    for (int i = 0; i < chain.Size(); ++i) {
        nodes.push_back(chain.GetAt(i));
    }
    return nodes;
}

inline IkChain ChainOf(const Nodes& nodes)
{
    IkChain chain;
    for (IkNode* node : nodes) {
        chain.AddNode(node);
    }
    return chain;
}

} // namespace test

#endif
