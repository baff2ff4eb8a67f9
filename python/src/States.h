#ifndef TRUNNION_PYTHON_STATES_H
#define TRUNNION_PYTHON_STATES_H

#include <memory>
#include <vector>

#include <IkJtState.h>

#include "Handles.h"

namespace bindings
{

/// A state vector that keeps its joints alive.
struct States
{
    IkJtStateVector vector;
    std::vector<std::shared_ptr<IkNode>> kept;

    void Add(const std::shared_ptr<IkJoint>& joint, double value);
};

std::shared_ptr<States> StatesOf(const IkJtStateVector& vector);

/// One state where it stands in its vector, which may have changed since.
class StateInVector
{
  public:
    StateInVector(std::shared_ptr<States> ofStates, int atIndex)
        : states(std::move(ofStates)), index(atIndex)
    {}
    /// Throws std::out_of_range where the vector is shorter by now.
    IkJtState& Get() const;

  private:
    std::shared_ptr<States> states;
    int index;
};

} // namespace bindings

#endif
