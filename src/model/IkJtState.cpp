#include "IkJtState.h"

#include <typeinfo>

namespace
{

IkJoint* AsJoint(IkNode* node)
{
    if (node == nullptr || !node->IsJoint()) {
        return nullptr;
    }
    // The usual classes need no search among the bases.
    const std::type_info* type = &typeid(*node);
    return type == &typeid(IkJtPrism) || type == &typeid(IkJtRot) ? static_cast<IkJoint*>(node)
                                                                  : dynamic_cast<IkJoint*>(node);
}

} // namespace

IkJtState::IkJtState() = default;

IkJtState::IkJtState(IkJoint* ofJoint)
    : value(ofJoint == nullptr ? 0.0 : ofJoint->GetCurValue()), joint(ofJoint)
{}

IkJtState::IkJtState(IkJoint* ofJoint, double withValue) : value(withValue), joint(ofJoint) {}

IkJtState::IkJtState(IkNode* node) : IkJtState(AsJoint(node)) {}

IkJtState::IkJtState(const IkJtState& other) = default;
IkJtState& IkJtState::operator=(const IkJtState& other) = default;
IkJtState::~IkJtState() = default;

bool IkJtState::operator==(const IkJtState& other) const
{
    return value == other.value;
}
bool IkJtState::operator<(const IkJtState& other) const
{
    return value < other.value;
}

IkJoint* IkJtState::GetJoint() const
{
    return joint;
}
double IkJtState::GetValue() const
{
    return value;
}
void IkJtState::SetValue(double newValue)
{
    value = newValue;
}
