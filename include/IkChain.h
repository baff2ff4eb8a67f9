/// @file
/// Chains: ordered lists of tree nodes from a base towards a tip.
///
/// - Frames: a chain's transform is base_to_tip, the product of its nodes' transforms from index 0.
/// - Ownership: a chain never owns its nodes and is valid while they live. Streams use chains by
///   pointer, so the host keeps them alive as long as the stream is used.
/// - Threads: one at a time.

#ifndef TRUNNION_IK_CHAIN_H
#define TRUNNION_IK_CHAIN_H

#include <vector>

#include "IkExport.h"
#include "IkJtState.h"
#include "IkNode.h"

/// An ordered list of nodes, base end at index 0. Null is never stored.
class IK_API IkChain
{
  public:
    IkChain(); //!< without nodes
    ///@{
    /// A copy lists the same nodes.
    IkChain(const IkChain& other);
    IkChain& operator=(const IkChain& other);
    ///@}
    virtual ~IkChain(); //!< leaves the nodes alone

    /// Forms its label and traces nothing.
    virtual void TraceDump(const wchar_t* label) const;

    void AddNode(IkNode* node);       //!< at the tip end
    void AddNodeAtHead(IkNode* node); //!< at the base end
    /// From the root of the node's tree to the node, both included; empty for null.
    void FillFromBase2Node(IkNode* node);
    void RemoveTail(); //!< forgets the node at the tip end, if there is one
    void Reset();      //!< forgets all nodes

    IkNode* GetAt(int index) const;                      //!< null outside the chain
    int Size() const;                                    //!< nodes, bodies included
    IkNode* SearchByUserDataPtr(const void* data) const; //!< nearest the base, or null

    /// The joints of the chain, in order, at their current values; a joint that is listed twice
    /// comes twice.
    IkJtStateVector GetJointStates() const;
    /// base_to_tip at the joints' current values; the identity for an empty chain.
    IkXformMat GetXformMat() const;
    /// base_to_tip for the values in `states`; joints not in it keep their current values.
    IkXformMat GetXformMat(IkJtStateVector& states) const;

    bool operator==(const IkChain& other) const; //!< the same nodes in the same order
    bool operator<(const IkChain& other) const;  //!< fewer nodes

  private:
    friend struct trunnion::DirectAccess;

    std::vector<IkNode*> nodes;
};

#endif
