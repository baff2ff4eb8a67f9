#ifndef TRUNNION_MACHINE_LOOP_STAGES_H
#define TRUNNION_MACHINE_LOOP_STAGES_H

#include "IkStream.h"
#include "machine/Jacobian.h"
#include "machine/KinematicLoop.h"
#include "machine/SafeSvd.h"
#include "machine/SolveFields.h"
#include "machine/StepMethods.h"

namespace trunnion
{

/// Chooses Jacobian and step method of every stream:
///
/// | method | Jacobian | step                           |
/// |--------|----------|--------------------------------|
/// | 1      | full     | CalcDThetaPsuedoInverse        |
/// | 2      | full     | CalcDThetaDLS                  |
/// | 4      | partial  | CalcDThetaPsuedoInversePartial |
/// | 5      | partial  | CalcDThetaSDLSPartial          |
/// | 6      | partial  | CalcDThetaDLSPartial           |
/// | other  | full     | the previous pass's step again |
inline constexpr int IkStepMethod = 4;

/// What tells the solve of a stream from that of a solver object.
struct SolveRules
{
    int lastPass;
    double tolerance;          // [length^2] plus [deg^2]
    double directionTolerance; // of a cosine
    bool isTraced;
};

/// The step of one of the methods towards `e`, with storage for the decomposition. A method without
/// a step leaves `step` as it is.
void CalculateStep(int method, const IkStream& stream, const SolveFields& fields,
                   const EndVector& e, const JointMatrix& jacobian, Decomposition& svd,
                   JointRow& step);

void TraceObjective(const IkEndState& current, const IkEndState& target);

/// The library's own stages for the iteration, on the working fields of a stream or of a solver
/// object.
class LoopStages
{
  public:
    /// `lastError` is what stays in force where no pass is made.
    LoopStages(IkStream& ofStream, const SolveFields& withFields, const IkEndState& forTarget,
               bool withToolOnly, int stepMethod, const SolveRules& withRules, double lastError);

    IkJtStateVector& States() { return fields.states; }
    int LastPass() const { return rules.lastPass; }
    double Tolerance() const { return rules.tolerance; }
    double LastError() const { return error; }

    /// No node is asked during the solve, so that no host's code runs in it.
    bool IsSettled() const { return loop.IsSettled(); }

    double Error();
    void Jacobian(int pass);
    void Step();
    void TakeStep(IkJoint::JointLimitTypes limitType);
    void TakeStep(bool applyLimits);

  private:
    IkStream& stream;
    SolveFields fields;
    const IkEndState& target;
    bool toolOnly;
    int method;
    SolveRules rules;
    double error;
    KinematicLoop loop;
    EndVector wanted{};   // of the target
    Reference working{};  // where the pass stands
    JointMatrix jacobian; // outlives a pass, as the step does: a stage that computes nothing leaves
    JointRow step;        // the previous one's result in force
    Decomposition svd;
};

} // namespace trunnion

#endif
