#ifndef TRUNNION_TESTS_PLAIN_PLAIN_STEPS_H
#define TRUNNION_TESTS_PLAIN_PLAIN_STEPS_H

#include "plain/PlainDecomposition.h"
#include "plain/PlainStages.h"

// The five steps, every term a matrix.
namespace plain
{

using Column = Array;

Column PseudoInverseStep(const IkStream& stream, const EndState& target, const EndState& current,
                         const Array& jacobian);
Column DampedStep(const IkStream& stream, const EndState& target, const EndState& current,
                  const Array& jacobian);
Column PseudoInversePartialStep(const Fields& fields, const EndState& target,
                                const EndState& current, const Array& jacobian);
Column DampedPartialStep(const Fields& fields, const EndState& target, const EndState& current,
                         const Array& jacobian);
Column SelectivelyDampedPartialStep(const Fields& fields, const EndState& target,
                                    const EndState& current, const Array& jacobian);

} // namespace plain

#endif
