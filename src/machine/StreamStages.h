#ifndef TRUNNION_MACHINE_STREAM_STAGES_H
#define TRUNNION_MACHINE_STREAM_STAGES_H

#include "IkStream.h"
#include "machine/SolveFields.h"

namespace trunnion
{

/// Chooses Jacobian and step method of every stream; see StreamStages.
inline constexpr int IkStepMethod = 4;

/// A stream's own stages for the iteration.
///
/// | method | Jacobian | step                           |
/// |--------|----------|--------------------------------|
/// | 1      | full     | CalcDThetaPsuedoInverse        |
/// | 2      | full     | CalcDThetaDLS                  |
/// | 4      | partial  | CalcDThetaPsuedoInversePartial |
/// | 5      | partial  | CalcDThetaSDLSPartial          |
/// | 6      | partial  | CalcDThetaDLSPartial           |
/// | other  | full     | the previous pass's step again |
class StreamStages
{
  public:
    StreamStages(IkStream& ofStream, bool withToolOnly, int stepMethod)
        : stream(ofStream), toolOnly(withToolOnly), method(stepMethod)
    {}

    static SolveFields Fields(IkStream& stream);

    IkJtStateVector& States() { return stream.SolverJtStates; }
    int LastPass() const { return 60; }
    double Tolerance() const { return 1e-8; } // [length^2] plus [deg^2]

    IkEndState ForwardKinematics();
    double Objective(const IkEndState& working, const IkEndState& target);
    void Jacobian(const IkEndState& working, TNT::Array2D<double>& jacobian, int pass);
    void Step(const IkEndState& target, const IkEndState& working, TNT::Array2D<double>& jacobian,
              TNT::Array2D<double>& step);

  private:
    IkStream& stream;
    bool toolOnly;
    int method;
};

} // namespace trunnion

#endif
