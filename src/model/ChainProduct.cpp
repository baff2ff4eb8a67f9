#include "model/ChainProduct.h"

#include <algorithm>
#include <cmath>
#include <typeinfo>

#include "model/DirectAccess.h"

namespace trunnion
{

namespace
{

bool IsAffine(const double* frame)
{
    return frame[12] == 0.0 && frame[13] == 0.0 && frame[14] == 0.0 && frame[15] == 1.0;
}

bool Turns(const double* frame)
{
    return frame[0] != 1.0 || frame[1] != 0.0 || frame[2] != 0.0 || //
           frame[4] != 0.0 || frame[5] != 1.0 || frame[6] != 0.0 || //
           frame[8] != 0.0 || frame[9] != 0.0 || frame[10] != 1.0;
}

bool IsIdentity(const double* frame)
{
    return !Turns(frame) && frame[3] == 0.0 && frame[7] == 0.0 && frame[11] == 0.0;
}

/// The offset of original * translation by `d` along one axis, in the fourth column. The +0 with
/// which the sums of the product begin is left in, so that no element is -0.
void Slide(const double* original, int axis, double d, double* placed)
{
    for (int row = 0; row < 12; row += 4) {
        placed[row + 3] = (0.0 + original[row + axis] * d) + original[row + 3];
    }
}

/// The rotation, which is that of the original frame.
void PlaceSlide(const double* original, double* placed)
{
    for (int row = 0; row < 12; row += 4) {
        for (int k = 0; k < 3; ++k) {
            placed[row + k] = 0.0 + original[row + k];
        }
    }
}

/// original * rotation that turns the axis `from` towards the axis `to`; `rest` is the third.
void TurnAbout(const double* original, int from, int to, int rest, double angle, double* placed)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const int first = std::min(from, to);
    const int second = std::max(from, to);
    // Rows `first` and `second` of the rotation, where it turns the first axis towards the second
    // or back.
    const double sine = from < to ? s : -s;
    const double minusSine = from < to ? -s : s;
    for (int row = 0; row < 12; row += 4) {
        placed[row + first] = (0.0 + original[row + first] * c) + original[row + second] * sine;
        placed[row + second] =
            (0.0 + original[row + first] * minusSine) + original[row + second] * c;
        placed[row + rest] = 0.0 + original[row + rest];
        placed[row + 3] = 0.0 + original[row + 3];
    }
}

} // namespace

bool ChainProduct::Settle(const IkChain& chain, const IkJtStateVector& states)
{
    count = 0;
    isEvaluated = false;
    const std::vector<IkNode*>& nodes = DirectAccess::Nodes(chain);
    const bool isLong = nodes.size() > kOwn;
    if (isLong) {
        more.resize(nodes.size());
    }
    links = isLong ? more.data() : own;
    if (!std::all_of(nodes.begin(), nodes.end(),
                     [this, &states](const IkNode* node) { return Add(*node, states); })) {
        return false;
    }
    for (int index = 0; index < std::min(states.Size(), kUsualStates); ++index) {
        firstLinks[index] = FindFirstLink(index);
    }
    return true;
}

bool ChainProduct::Add(const IkNode& node, const IkJtStateVector& states)
{
    // The class itself, none derived from it: only then is its transform known here. Addresses will
    // do: a class whose description stands twice in the process is taken for a host's own.
    const std::type_info* type = &typeid(node);
    const double* original = DirectAccess::OrigFrame(node);
    if (type == &typeid(IkBody) || type == &typeid(IkNode) || type == &typeid(IkJoint)) {
        if (!IsAffine(original)) {
            return false;
        }
        AddFixed(original);
        return true;
    }
    const bool isPrism = type == &typeid(IkJtPrism);
    if (!isPrism && type != &typeid(IkJtRot)) {
        return false;
    }
    const auto& joint = static_cast<const IkJoint&>(node);
    const int axis =
        DirectAccess::Primitive(joint) - (isPrism ? IkJoint::JtPrimTransX : IkJoint::JtPrimRotX);
    if (axis < 0 || axis > 2) {
        return true; // a joint without motion is the identity
    }
    if (!IsAffine(original)) {
        return false;
    }
    const Motion first = isPrism ? Motion::SlideX : Motion::TurnX;
    AddJoint(joint, static_cast<Motion>(static_cast<int>(first) + axis), states);
    return true;
}

ChainProduct::Link& ChainProduct::NewLink()
{
    return links[count++];
}

void ChainProduct::AddFixed(const double* original)
{
    if (IsIdentity(original)) {
        return;
    }
    Link& link = NewLink();
    link.original = original;
    link.local = original;
    link.motion = Motion::None;
    link.turns = Turns(original);
    link.stateIndex = -1;
}

void ChainProduct::AddJoint(const IkJoint& joint, Motion motion, const IkJtStateVector& states)
{
    Link& link = NewLink();
    link.original = DirectAccess::OrigFrame(joint);
    link.local = link.placed.e;
    link.motion = motion;
    link.turns = motion >= Motion::TurnX || Turns(link.original);
    link.isReversed = DirectAccess::IsReversed(joint);
    link.initialValue = DirectAccess::InitialValue(joint);
    const int index = states.FindStateByJointPtr(&joint);
    link.stateIndex = index < states.Size() ? index : -1;
    link.value = DirectAccess::CurrentValue(joint);
    if (IsSlide(link)) {
        PlaceSlide(link.original, link.placed.e);
    }
}

void ChainProduct::Place(const Link& link, double value, Affine& placed)
{
    double d = value - link.initialValue;
    if (link.isReversed) {
        d = d * -1.0;
    }
    switch (link.motion) {
    case Motion::None:
        break;
    case Motion::SlideX:
        Slide(link.original, 0, d, placed.e);
        break;
    case Motion::SlideY:
        Slide(link.original, 1, d, placed.e);
        break;
    case Motion::SlideZ:
        Slide(link.original, 2, d, placed.e);
        break;
    case Motion::TurnX:
        TurnAbout(link.original, 1, 2, 0, d, placed.e);
        break;
    case Motion::TurnY:
        TurnAbout(link.original, 2, 0, 1, d, placed.e);
        break;
    case Motion::TurnZ:
        TurnAbout(link.original, 0, 1, 2, d, placed.e);
        break;
    }
}

bool ChainProduct::IsSlide(const Link& link)
{
    return link.motion >= Motion::SlideX && link.motion <= Motion::SlideZ;
}

void ChainProduct::Append(const double* baseToParent, const Link& link, const double* local,
                          double* baseToNode, double* lever)
{
    if (link.turns) {
        Multiply(baseToParent, local, baseToNode, lever);
    } else {
        MultiplyByShift(baseToParent, local, baseToNode, lever);
    }
}

const double* ChainProduct::BaseTo(int link) const
{
    return link < 0 ? kIdentityAffine.e : links[link].baseToNode.e;
}

const double* ChainProduct::Evaluate(IkJtStateVector& states)
{
    // What changes from a link on: nothing yet, offsets, or everything.
    enum { Nothing, Offsets, All } changed = isEvaluated ? Nothing : All;
    for (int i = 0; i < count; ++i) {
        Link& link = links[i];
        bool isMoved = false;
        if (link.motion != Motion::None) {
            const double value =
                link.stateIndex < 0 ? link.value : DirectAccess::Value(states, link.stateIndex);
            // Zeros of either sign place a joint alike; a NaN is placed again and again.
            isMoved = !isEvaluated || !(value == link.value);
            if (isMoved) {
                link.value = value;
                Place(link, value, link.placed);
                changed = IsSlide(link) ? std::max(changed, Offsets) : All;
            }
        }
        if (changed == All) {
            Append(BaseTo(i - 1), link, link.local, link.baseToNode.e, link.lever);
        } else if (changed == Offsets) {
            const double* parent = BaseTo(i - 1);
            if (isMoved) {
                Turn(parent, link.placed.e[3], link.placed.e[7], link.placed.e[11], link.lever);
            }
            for (int row = 0; row < 3; ++row) {
                link.baseToNode.e[4 * row + 3] = link.lever[row] + parent[4 * row + 3];
            }
        }
    }
    isEvaluated = true;
    return BaseTo(count - 1);
}

/// The first link that the state at `index` moves, or the number of links.
int ChainProduct::FirstLink(int index) const
{
    return index < kUsualStates && count > 0 ? firstLinks[index] : FindFirstLink(index);
}

int ChainProduct::FindFirstLink(int index) const
{
    int i = 0;
    while (i < count && links[i].stateIndex != index) {
        ++i;
    }
    return i;
}

bool ChainProduct::Moves(int index) const
{
    return FirstLink(index) < count;
}

bool ChainProduct::Slides(int index) const
{
    const int i = FirstLink(index);
    return i < count && IsSlide(links[i]);
}

void ChainProduct::EvaluateMoved(int index, double value, Affine& baseToTip) const
{
    Affine scratch; // NOLINT(*-member-init)
    Affine placed;  // NOLINT(*-member-init)
    double lever[3];
    int i = FirstLink(index);
    const double* before = BaseTo(i - 1);
    // The two take turns, so that the last product lands in the result.
    double* here = (count - i) % 2 == 1 ? baseToTip.e : scratch.e;
    double* next = here == scratch.e ? baseToTip.e : scratch.e;
    for (; i < count; ++i) {
        const Link& link = links[i];
        const double* local = link.local;
        if (link.stateIndex == index) {
            placed = link.placed;
            Place(link, value, placed);
            local = placed.e;
        }
        Append(before, link, local, here, lever);
        before = here;
        std::swap(here, next);
    }
}

void ChainProduct::EvaluateSlid(int index, double value, double* offset) const
{
    int i = FirstLink(index);
    const double* before = BaseTo(i - 1);
    for (int row = 0; row < 3; ++row) {
        offset[row] = before[4 * row + 3];
    }
    for (; i < count; ++i) {
        const Link& link = links[i];
        double moved[3];
        const double* lever = link.lever;
        if (link.stateIndex == index) {
            Affine placed{};
            Place(link, value, placed);
            Turn(BaseTo(i - 1), placed.e[3], placed.e[7], placed.e[11], moved);
            lever = moved;
        }
        for (int row = 0; row < 3; ++row) {
            offset[row] = lever[row] + offset[row];
        }
    }
}

} // namespace trunnion
