#include "Solvers.h"

#include <algorithm>
#include <stdexcept>

#include <pybind11/stl.h>

#include "Serial.h"
#include "Unlocked.h"

namespace py = pybind11;

namespace bindings
{

namespace
{

/// Notes what the library would have an analyst look at.
class Witness : public IkSolutionAnalyst
{
  public:
    bool AnalyzeSolutions(IkStream* /*stream*/, IkJtStateVector* startStates,
                          std::vector<IkSolverSampleItem>& ofSolve) override
    {
        start = *startStates;
        samples = ofSolve;
        return true;
    }

    IkJtStateVector start;
    std::vector<IkSolverSampleItem> samples;
};

/// The solver asks this analyst as long as this lives.
class Asked
{
  public:
    Asked(IkSolverHybrid& ofSolver, IkSolutionAnalyst& analyst) : solver(ofSolver)
    {
        solver.SetAnalystObj(&analyst);
    }
    ~Asked() { solver.SetAnalystObj(nullptr); }
    Asked(const Asked&) = delete;
    Asked& operator=(const Asked&) = delete;

  private:
    IkSolverHybrid& solver;
};

std::shared_ptr<Sample> SampleOf(const IkSolverSampleItem& item,
                                 const std::shared_ptr<Stream>& stream)
{
    auto sample = std::make_shared<Sample>();
    sample->startStates = StatesOf(item.startStates);
    sample->resultStates = StatesOf(item.resultStates);
    sample->stream = stream;
    sample->rejected = item.rejected;
    sample->errorValue = item.errorValue;
    return sample;
}

bool IsIncomplete(const std::shared_ptr<Sample>& sample)
{
    return sample == nullptr || sample->startStates == nullptr || sample->resultStates == nullptr;
}

} // namespace

void Solver::SetStart(const std::shared_ptr<States>& states)
{
    auto copy = states == nullptr ? nullptr : StatesOf(states->vector);
    if (!solver->SetStartingJtStates(copy == nullptr ? nullptr : &copy->vector)) {
        throw std::invalid_argument("the states are not those of the stream's joints, in the "
                                    "stream's order; begin with its GetJointStates()");
    }
    start = std::move(copy);
}

std::shared_ptr<States> Solver::Start() const
{
    return start == nullptr ? nullptr : StatesOf(start->vector);
}

Answer Solver::Solve(Request request)
{
    const Serial alone;
    if (start != nullptr && !solver->SetStartingJtStates(&start->vector)) {
        throw std::invalid_argument("the stream has other joints than the start states by now");
    }
    IkJtStateVector answer;
    bool hasConverged = false;
    {
        const Unlocked others;
        hasConverged = solver->SolveIK(request.target, answer, request.toolOnly, request.limits,
                                       request.lockRotary);
    }
    return {hasConverged, StatesOf(answer)};
}

Answer HybridSolver::Solve(Request request)
{
    Witness witness;
    Answer answer;
    {
        const Serial alone;
        const Asked asked(dynamic_cast<IkSolverHybrid&>(Get()), witness);
        answer = Solver::Solve(std::move(request));
    }
    samples.clear();
    for (const IkSolverSampleItem& item : witness.samples) {
        samples.push_back(SampleOf(item, GetStream()));
    }
    return samples.empty() ? answer : Choose(StatesOf(witness.start));
}

/// As the library does: the analyst's last sample, or the first one that is not rejected.
Answer HybridSolver::Choose(const std::shared_ptr<States>& from)
{
    const std::shared_ptr<States> fallback = samples.front()->resultStates;
    if (analyst.is_none()) {
        for (const std::shared_ptr<Sample>& sample : samples) {
            if (!sample->rejected) {
                return {true, StatesOf(sample->resultStates->vector)};
            }
        }
        return {false, StatesOf(fallback->vector)};
    }
    const py::object asked = analyst; // which it may replace itself
    const py::list shown = py::cast(samples);
    asked.attr("AnalyzeSolutions")(GetStream(), from, shown);
    auto edited = shown.cast<Samples>();
    if (std::any_of(edited.begin(), edited.end(), IsIncomplete)) {
        throw std::invalid_argument("the analyst left a sample without states");
    }
    samples = std::move(edited);
    return {!samples.empty(),
            StatesOf((samples.empty() ? fallback : samples.back()->resultStates)->vector)};
}

void HybridSolver::SetAnalyst(py::object newAnalyst)
{
    if (!newAnalyst.is_none() && !py::hasattr(newAnalyst, "AnalyzeSolutions")) {
        throw py::type_error("an analyst has a method AnalyzeSolutions(stream, start_states, "
                             "samples); derive it from IkSolutionAnalyst");
    }
    analyst = std::move(newAnalyst);
}

int HybridSolver::Visit(visitproc visit, void* argument) const
{
    return analyst ? visit(analyst.ptr(), argument) : 0;
}

} // namespace bindings
