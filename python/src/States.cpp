#include "States.h"

#include <stdexcept>

namespace bindings
{

void States::Add(const std::shared_ptr<IkJoint>& joint, double value)
{
    kept.push_back(joint);
    vector.AddState(IkJtState(joint.get(), value));
}

std::shared_ptr<States> StatesOf(const IkJtStateVector& vector)
{
    auto states = std::make_shared<States>();
    states->vector = vector;
    for (int i = 0; i < vector.Size(); ++i) {
        states->kept.push_back(HandleOf(states->vector.GetState(i).GetJoint()));
    }
    return states;
}

IkJtState& StateInVector::Get() const
{
    if (index < 0 || index >= states->vector.Size()) {
        throw std::out_of_range("the state is not in its vector any more");
    }
    return states->vector.GetState(index);
}

} // namespace bindings
