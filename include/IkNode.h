/// @file
/// The kinematic tree: a machine is a tree of rigid bodies and joints, linked parent to child.
///
/// - Frames: a node's original frame is its fixed transform from its parent, in the host's length
///   unit.
/// - Ownership: nodes live on the heap and are created by the host. A node's destructor does not
///   destroy its children; DestroyChildren does, and IkMachine calls it for the tree it owns.
/// - Threads: one at a time per tree.

#ifndef TRUNNION_IK_NODE_H
#define TRUNNION_IK_NODE_H

#include <string>
#include <vector>

#include "IkExport.h"
#include "IkXformMat.h"

class IkJtStateVector;

namespace trunnion
{
struct DirectAccess;
}

/// What bodies and joints have in common: identity, frames, place in the tree, and an opaque
/// pointer that leads back to the host's own object. Copies are shallow: they list the same
/// children.
class IK_API IkNode
{
  public:
    /// Name and type "NA", identity frames, no relatives, dirty.
    IkNode();
    IkNode(const std::wstring& name); //!< the same under a name
    /// Copies everything, children by pointer; the copy is dirty.
    IkNode(const IkNode& other);
    /// Copies everything, children by pointer, the dirty flag included.
    IkNode& operator=(const IkNode& other);
    virtual ~IkNode();

    /// The node's transform from its parent for the values in `states`; a body ignores them.
    virtual IkXformMat GetXformMat(IkJtStateVector& states);
    /// The same for one value; null means the node's own current value.
    virtual IkXformMat GetXformMat(double* value);
    /// Clears the dirty flag of the subtree, children first. Computes no frame. Always true.
    virtual bool UpdateFrames();
    virtual bool IsJoint() const; //!< false; chains and machine list only nodes that say true
    /// Traces the original and world frame, then the children one tab deeper.
    virtual void TraceDump(const wchar_t* label) const;

    ///@{
    /// Any text; names need not differ. SearchByName alone reads a name, nothing reads a type.
    std::wstring GetName() const;
    void SetName(const std::wstring& newName);
    std::wstring GetType() const;
    void SetType(const std::wstring& newType);
    ///@}

    IkXformMat GetOrigFrame() const;  //!< fixed transform as the host defined it
    IkXformMat GetRelFrame() const;   //!< frame relative to the parent
    IkXformMat GetWorldFrame() const; //!< frame in machine coordinates, as last stored
    ///@{
    /// Each frame is stored by itself, none is computed from another. Kinematics read the original
    /// frame; the world frame only at the tip of a part chain whose part space is fixed; the
    /// relative frame never.
    void SetOrigFrame(const IkXformMat& frame);
    void SetRelFrame(const IkXformMat& frame);
    void SetWorldFrame(const IkXformMat& frame);
    ///@}

    IkNode* GetParentPtr() const; //!< null at the root
    /// Stores the pointer only; no child list changes.
    void SetParent(IkNode* newParent);
    void* GetUserData() const;    //!< as the host set it, else null; never read through
    void SetUserData(void* data); //!< does not mark the node dirty
    ///@{
    /// Set by most setters and cleared by UpdateFrames, for the host: nothing here depends on it.
    bool IsDirty() const;
    void SetDirty(bool isDirty);
    ///@}

    std::vector<IkNode*> GetKidList() const; //!< a copy, in the order in which they were added
    /// Appends `child`, makes this its parent and marks it dirty. Null is ignored.
    void AddChild(IkNode* child);
    /// Deletes all descendants, deepest first. This node itself stays.
    void DestroyChildren();

    /// First match in pre-order (a node before its descendants), or null. Names match exactly.
    IkNode* SearchByName(const std::wstring& wanted);
    /// Also records the path: the match is appended to `path`, then each ancestor up to this node
    /// is put in front of all. From an empty vector that is [this, ..., match].
    IkNode* SearchByName(const std::wstring& wanted, std::vector<IkNode*>& path);
    ///@{
    /// The same for the node whose user data is `data`.
    IkNode* SearchByUserDataPtr(const void* data);
    IkNode* SearchByUserDataPtr(const void* data, std::vector<IkNode*>& path);
    ///@}

    /// Nodes are compared by identity: true only for one and the same object.
    bool operator==(const IkNode& other) const;
    /// Nodes have no order: always false.
    bool operator<(const IkNode& other) const;

  private:
    friend struct trunnion::DirectAccess;

    template <class Matches>
    IkNode* Search(const Matches& matches, std::vector<IkNode*>* path);

    std::wstring name{L"NA"};
    std::wstring type{L"NA"};
    IkXformMat relativeFrame;
    IkXformMat worldFrame;
    IkXformMat originalFrame;
    std::vector<IkNode*> children; // not owned, see DestroyChildren
    IkNode* parent{nullptr};
    bool dirty{true};
    void* userData{nullptr};
};

/// A rigid body: a node whose transform is its original frame.
class IK_API IkBody : public IkNode
{
  public:
    ///@{
    /// As of IkNode: name "NA" where none is given, identity frames; copies are shallow.
    IkBody();
    IkBody(const std::wstring& name);
    IkBody(const IkBody& other);
    IkBody& operator=(const IkBody& other);
    ///@}
    ~IkBody() override;
};

#endif
