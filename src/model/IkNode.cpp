#include "IkNode.h"

#include <algorithm>

#include "geometry/Trace.h"
#include "model/TreeVisit.h"

using trunnion::TreeVisit;

IkNode::IkNode() = default;

IkNode::IkNode(const std::wstring& newName) : name(newName) {}

IkNode::IkNode(const IkNode& other)
    : name(other.name), type(other.type), relativeFrame(other.relativeFrame),
      worldFrame(other.worldFrame), originalFrame(other.originalFrame), children(other.children),
      parent(other.parent), userData(other.userData)
{}

IkNode& IkNode::operator=(const IkNode& other)
{
    if (this == &other) {
        return *this;
    }
    // What may fail goes first: a node is never half another one.
    std::wstring newName = other.name;
    std::wstring newType = other.type;
    std::vector<IkNode*> newChildren = other.children;
    name.swap(newName);
    type.swap(newType);
    children.swap(newChildren);
    relativeFrame = other.relativeFrame; // of the same size: no storage is taken
    worldFrame = other.worldFrame;
    originalFrame = other.originalFrame;
    parent = other.parent;
    dirty = other.dirty;
    userData = other.userData;
    return *this;
}

IkNode::~IkNode() = default;

IkXformMat IkNode::GetXformMat(IkJtStateVector& /*states*/)
{
    return originalFrame;
}
IkXformMat IkNode::GetXformMat(double* /*value*/)
{
    return originalFrame;
}

bool IkNode::UpdateFrames()
{
    const TreeVisit visit(TreeVisit::Walk::UpdateFrames, this);
    if (!visit.IsCycle()) {
        // A host's node may add others: NOLINTNEXTLINE(modernize-loop-convert)
        for (std::size_t i = 0; i < children.size(); ++i) {
            children[i]->UpdateFrames();
        }
        dirty = false;
    }
    return true;
}

bool IkNode::IsJoint() const
{
    return false;
}

void IkNode::TraceDump(const wchar_t* label) const
{
    const TreeVisit visit(TreeVisit::Walk::TraceDump, this);
    if (visit.IsCycle()) {
        return;
    }
    const std::wstring frameLabel =
        trunnion::TraceLabel(label, L"\t\t", trunnion::kTraceFrameLabel);
    originalFrame.TraceDump(frameLabel.c_str());
    worldFrame.TraceDump(frameLabel.c_str());
    const std::wstring childLabel = trunnion::TraceLabel(label, L"\t", trunnion::kTraceChildLabel);
    // As above: NOLINTNEXTLINE(modernize-loop-convert)
    for (std::size_t i = 0; i < children.size(); ++i) {
        children[i]->TraceDump(childLabel.c_str());
    }
}

std::wstring IkNode::GetName() const
{
    return name;
}

void IkNode::SetName(const std::wstring& newName)
{
    name = newName;
    dirty = true;
}

std::wstring IkNode::GetType() const
{
    return type;
}

void IkNode::SetType(const std::wstring& newType)
{
    type = newType;
    dirty = true;
}

IkXformMat IkNode::GetOrigFrame() const
{
    return originalFrame;
}
IkXformMat IkNode::GetRelFrame() const
{
    return relativeFrame;
}
IkXformMat IkNode::GetWorldFrame() const
{
    return worldFrame;
}

void IkNode::SetOrigFrame(const IkXformMat& frame)
{
    originalFrame = frame;
    dirty = true;
}

void IkNode::SetRelFrame(const IkXformMat& frame)
{
    relativeFrame = frame;
    dirty = true;
}

void IkNode::SetWorldFrame(const IkXformMat& frame)
{
    worldFrame = frame;
    dirty = true;
}

IkNode* IkNode::GetParentPtr() const
{
    return parent;
}

void IkNode::SetParent(IkNode* newParent)
{
    parent = newParent;
    dirty = true;
}

void* IkNode::GetUserData() const
{
    return userData;
}
void IkNode::SetUserData(void* data)
{
    userData = data;
}
bool IkNode::IsDirty() const
{
    return dirty;
}
void IkNode::SetDirty(bool isDirty)
{
    dirty = isDirty;
}

std::vector<IkNode*> IkNode::GetKidList() const
{
    return children;
}

void IkNode::AddChild(IkNode* child)
{
    if (child != nullptr) {
        children.push_back(child);
        child->parent = this;
        child->dirty = true;
    }
}

void IkNode::DestroyChildren()
{
    const TreeVisit visit(TreeVisit::Walk::DestroyChildren, this);
    if (visit.IsCycle()) {
        return;
    }
    for (std::size_t left = children.size(); left > 0; left = std::min(left - 1, children.size())) {
        IkNode* child = children[left - 1];
        child->DestroyChildren();
        if (child->children.empty()) {
            // All entries: a child that was added twice is one object.
            children.erase(std::remove(children.begin(), children.end(), child), children.end());
            delete child;
        }
    }
}

template <class Matches>
IkNode* IkNode::Search(const Matches& matches, std::vector<IkNode*>* path)
{
    const TreeVisit visit(TreeVisit::Walk::Search, this);
    if (visit.IsCycle()) {
        return nullptr;
    }
    if (matches(*this)) {
        if (path != nullptr) {
            path->push_back(this);
        }
        return this;
    }
    for (IkNode* child : children) {
        if (IkNode* found = child->Search(matches, path)) {
            if (path != nullptr) {
                path->insert(path->begin(), this);
            }
            return found;
        }
    }
    return nullptr;
}

IkNode* IkNode::SearchByName(const std::wstring& wanted)
{
    return Search([&wanted](const IkNode& node) { return node.name == wanted; }, nullptr);
}

IkNode* IkNode::SearchByName(const std::wstring& wanted, std::vector<IkNode*>& path)
{
    return Search([&wanted](const IkNode& node) { return node.name == wanted; }, &path);
}

IkNode* IkNode::SearchByUserDataPtr(const void* data)
{
    return Search([data](const IkNode& node) { return node.userData == data; }, nullptr);
}

IkNode* IkNode::SearchByUserDataPtr(const void* data, std::vector<IkNode*>& path)
{
    return Search([data](const IkNode& node) { return node.userData == data; }, &path);
}

bool IkNode::operator==(const IkNode& other) const
{
    return this == &other;
}
bool IkNode::operator<(const IkNode& /*other*/) const
{
    return false;
}

IkBody::IkBody() = default;
IkBody::IkBody(const std::wstring& newName) : IkNode(newName) {}
IkBody::IkBody(const IkBody& other) = default;
IkBody& IkBody::operator=(const IkBody& other) = default;
IkBody::~IkBody() = default;
