#include "plain/PlainKinematics.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include <tnt/tnt_array2d_utils.h>

namespace plain
{

namespace
{

Matrix Motion(IkJoint::JtPrimitives primitive, double d)
{
    switch (primitive) {
    case IkJoint::JtPrimTransX:
        return Translation(d, 0, 0);
    case IkJoint::JtPrimTransY:
        return Translation(0, d, 0);
    case IkJoint::JtPrimTransZ:
        return Translation(0, 0, d);
    case IkJoint::JtPrimRotX:
        return Rotation(1, 2, d);
    case IkJoint::JtPrimRotY:
        return Rotation(2, 0, d);
    default:
        return Rotation(0, 1, d);
    }
}

bool IsPrism(const IkNode& node)
{
    return typeid(node) == typeid(IkJtPrism);
}

bool IsRot(const IkNode& node)
{
    return typeid(node) == typeid(IkJtRot);
}

/// Linear joints move along axes only, rotary ones about them.
bool Moves(const IkJoint& joint)
{
    const int primitive = joint.GetJtPrimitive();
    return IsPrism(joint) ? primitive >= 1 && primitive <= 3 : primitive >= 5 && primitive <= 7;
}

Matrix JointTransform(const IkJoint& joint, double value)
{
    if (!Moves(joint)) {
        return Identity();
    }
    double d = value - joint.GetInitialValue();
    if (joint.IsDirectionReversed()) {
        d = d * -1.0;
    }
    return joint.GetOrigFrame() * Motion(joint.GetJtPrimitive(), d);
}

double ValueOf(const IkJoint& joint, const States& states)
{
    const int place = states.Place(&joint);
    return place >= 0 && place < states.Size() ? states.Value(place) : joint.GetCurValue();
}

bool IsFixedNode(const IkNode& node)
{
    return typeid(node) == typeid(IkNode) || typeid(node) == typeid(IkBody) ||
           typeid(node) == typeid(IkJoint);
}

Matrix AskHost(IkNode& node, States& states)
{
    IkJtStateVector asked = states.ToLibrary();
    const Matrix transform = FourByFour(node.GetXformMat(asked));
    states.TakeValues(asked);
    return transform;
}

Matrix NodeTransform(IkNode& node, States& states)
{
    if (IsFixedNode(node)) {
        return node.GetOrigFrame();
    }
    if (IsPrism(node) || IsRot(node)) {
        const auto& joint = dynamic_cast<const IkJoint&>(node);
        return JointTransform(joint, ValueOf(joint, states));
    }
    return AskHost(node, states);
}

Matrix NodeTransform(IkNode& node)
{
    if (IsFixedNode(node)) {
        return node.GetOrigFrame();
    }
    if (IsPrism(node) || IsRot(node)) {
        const auto& joint = dynamic_cast<const IkJoint&>(node);
        return JointTransform(joint, joint.GetCurValue());
    }
    return FourByFour(node.GetXformMat(static_cast<double*>(nullptr)));
}

const IkChain& ChainOf(const IkStream& stream, int index)
{
    IkChain* chain = nullptr;
    stream.GetChain(index, &chain);
    return *chain;
}

Matrix BaseToPart(const IkStream& stream, States& states)
{
    const IkChain& chain = ChainOf(stream, 1);
    bool has = false;
    bool fixed = false;
    stream.GetPartSpaceInfo(has, fixed);
    if (has && fixed && chain.Size() > 0) {
        return chain.GetAt(chain.Size() - 1)->GetWorldFrame();
    }
    return ChainTransform(chain, states);
}

} // namespace

EndState::EndState(const IkEndState& handed) : pose(handed.GetCompleteState())
{
    handed.GetFilter(filter.data());
}

EndState::EndState(Matrix withPose, const std::array<bool, 4>& withFilter)
    : pose(std::move(withPose)), filter(withFilter)
{}

int EndState::Size() const
{
    return 3 * static_cast<int>(std::count(filter.begin(), filter.end(), true));
}

TNT::Array1D<double> EndState::Vector() const
{
    TNT::Array1D<double> vector(Size());
    int entry = 0;
    for (const int column : {3, 0, 1, 2}) {
        for (int i = 0; i < 3 && filter[static_cast<std::size_t>(column)]; ++i) {
            vector[entry++] = pose[i][column];
        }
    }
    return vector;
}

Array Difference(const EndState& a, const EndState& b)
{
    const TNT::Array1D<double> ofA = a.Vector();
    const TNT::Array1D<double> ofB = b.Vector();
    Array difference(ofA.dim(), 1);
    for (int i = 0; i < ofA.dim(); ++i) {
        difference[i][0] = ofA[i] - ofB[i];
    }
    return difference;
}

Matrix ChainTransform(const IkChain& chain, States& states)
{
    Matrix result = Identity();
    for (int i = 0; i < chain.Size(); ++i) {
        result = result * NodeTransform(*chain.GetAt(i), states);
    }
    return result;
}

Matrix ChainTransform(const IkChain& chain)
{
    Matrix result = Identity();
    for (int i = 0; i < chain.Size(); ++i) {
        result = result * NodeTransform(*chain.GetAt(i));
    }
    return result;
}

Matrix Pose(const IkStream& stream, States& states, bool toolOnly)
{
    return SolveFK(stream, states, false, nullptr, nullptr, toolOnly);
}

Matrix SolveFK(const IkStream& stream, States& states, bool commit, Matrix* partOut,
               Matrix* toolOut, bool toolOnly)
{
    if (stream.NumChains() == 0 || states.Size() == 0) {
        return Identity();
    }
    if (commit) {
        Commit(states);
    }
    const Matrix baseToTool = ChainTransform(ChainOf(stream, 0), states);
    if (toolOut != nullptr) {
        *toolOut = baseToTool;
    }
    if (stream.NumChains() == 1 || (toolOnly && partOut == nullptr)) {
        return baseToTool;
    }
    const Matrix baseToPart = BaseToPart(stream, states);
    if (partOut != nullptr) {
        *partOut = baseToPart;
    }
    return toolOnly ? Identity() : RigidInverse(baseToPart) * baseToTool;
}

bool SolveNewPartSpace(const IkStream& stream, States& states, const Matrix& partSpace, Matrix& out)
{
    if (stream.NumChains() != 2 || states.Size() == 0) {
        return false;
    }
    const IkChain& chain = ChainOf(stream, 1);
    const int count = stream.GetHasPartSpaceMatrix() ? chain.Size() - 1 : chain.Size();
    out = Identity(); // `partSpace` may be the same matrix
    for (int i = 0; i < count; ++i) {
        out = out * NodeTransform(*chain.GetAt(i), states);
    }
    out = out * partSpace;
    return true;
}

Matrix PartSpaceFrame(const IkChain& partChain, const Matrix& frame)
{
    States initial;
    for (int i = 0; i < partChain.Size(); ++i) {
        IkNode* node = partChain.GetAt(i);
        auto* joint = node->IsJoint() ? dynamic_cast<IkJoint*>(node) : nullptr;
        if (node->IsJoint()) {
            initial.Add(joint, joint == nullptr ? 0.0 : joint->GetInitialValue());
        }
    }
    return RigidInverse(ChainTransform(partChain, initial)) * frame;
}

} // namespace plain
