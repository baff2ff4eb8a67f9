#ifndef TRUNNION_PYTHON_SOLVERS_H
#define TRUNNION_PYTHON_SOLVERS_H

#include <memory>
#include <utility>
#include <vector>

#include <IkSolver.h>

#include <pybind11/pybind11.h>

#include "States.h"
#include "Stream.h"

namespace bindings
{

using Answer = std::pair<bool, std::shared_ptr<States>>;

/// What a solve is asked for.
struct Request
{
    IkEndState target;
    bool toolOnly;
    IkJoint::JointLimitTypes limits;
    bool lockRotary;
};

/// A solver object with what it works on.
class Solver
{
  public:
    explicit Solver(const std::shared_ptr<Stream>& ofStream)
        : Solver(std::make_unique<IkSolver>(&ofStream->Get()), ofStream)
    {}
    virtual ~Solver() = default;
    Solver(const Solver&) = delete;
    Solver& operator=(const Solver&) = delete;

    IkSolver& Get() { return *solver; }
    const std::shared_ptr<Stream>& GetStream() const { return stream; }
    /// A copy of the states; null for the joints' current values. Throws std::invalid_argument for
    /// other joints than the stream's.
    void SetStart(const std::shared_ptr<States>& states);
    std::shared_ptr<States> Start() const;
    virtual Answer Solve(Request request);

  protected:
    Solver(std::unique_ptr<IkSolver> ofLibrary, std::shared_ptr<Stream> ofStream)
        : stream(std::move(ofStream)), solver(std::move(ofLibrary))
    {}

  private:
    std::shared_ptr<Stream> stream;
    std::unique_ptr<IkSolver> solver;
    std::shared_ptr<States> start;
};

class PseudoInverseSolver : public Solver
{
  public:
    explicit PseudoInverseSolver(const std::shared_ptr<Stream>& ofStream)
        : Solver(std::make_unique<IkSolverPsuedoInverse>(&ofStream->Get()), ofStream)
    {}
};

/// One start of the hybrid solver and what came of it.
struct Sample
{
    std::shared_ptr<States> startStates{std::make_shared<States>()};
    std::shared_ptr<States> resultStates{std::make_shared<States>()};
    std::shared_ptr<Stream> stream;
    long long userValue1{0};
    long long userValue2{0};
    long long userValue3{0};
    std::wstring label;
    bool rejected{false};
    double errorValue{0.0};
};

using Samples = std::vector<std::shared_ptr<Sample>>;

/// The hybrid solver with an analyst in Python. The analyst is asked when the library is done, with
/// the interpreter's lock and no other: it may solve, here and in other threads, and raise.
class HybridSolver : public Solver
{
  public:
    explicit HybridSolver(const std::shared_ptr<Stream>& ofStream)
        : Solver(std::make_unique<IkSolverHybrid>(&ofStream->Get()), ofStream)
    {}

    Answer Solve(Request request) override;
    /// Throws pybind11::type_error for what cannot be asked.
    void SetAnalyst(pybind11::object newAnalyst);
    const pybind11::object& Analyst() const { return analyst; }
    const Samples& LastSamples() const { return samples; }

    int Visit(visitproc visit, void* argument) const;
    void Clear() { analyst = pybind11::none(); }

  private:
    Answer Choose(const std::shared_ptr<States>& from);

    pybind11::object analyst = pybind11::none();
    Samples samples;
};

} // namespace bindings

#endif
