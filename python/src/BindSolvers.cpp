#include "Bindings.h"
#include "Serial.h"
#include "Solvers.h"

#include <pybind11/stl.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

using Guard = py::call_guard<Serial>;

Answer Solve(Solver& solver, const IkEndState& target, bool toolOnly,
             IkJoint::JointLimitTypes limits, bool lockRotary)
{
    return solver.Solve({target, toolOnly, limits, lockRotary});
}

/// Null as long as Python has made the object and not yet called its constructor.
HybridSolver* InsideOf(PyObject* object)
{
    auto* const instance = reinterpret_cast<py::detail::instance*>(object);
    const auto value = instance->get_value_and_holder();
    return value.holder_constructed() ? static_cast<HybridSolver*>(value.value_ptr()) : nullptr;
}

/// An analyst usually refers to its solver: the collector has to see that circle.
void AddToCollector(PyHeapTypeObject* heapType)
{
    PyTypeObject& type = heapType->ht_type;
    type.tp_flags |= Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = [](PyObject* object, visitproc visit, void* argument) {
        const HybridSolver* const solver = InsideOf(object);
        const int found = visit(reinterpret_cast<PyObject*>(Py_TYPE(object)), argument);
        return found != 0 || solver == nullptr ? found : solver->Visit(visit, argument);
    };
    type.tp_clear = [](PyObject* object) {
        if (HybridSolver* const solver = InsideOf(object)) {
            solver->Clear();
        }
        return 0;
    };
}

void BindBase(py::module_& module)
{
    py::class_<Solver, std::shared_ptr<Solver>> solver(
        module, "IkSolver",
        "The iteration as an object. Its own step is empty: it measures a pose and does not move;\n"
        "IkSolverPsuedoInverse does. The stream lives as long as the solver.");
    solver
        .def(py::init<const std::shared_ptr<Stream>&>(), py::arg("stream").none(false), Guard(),
             "A solver for a stream.")
        .def("GetStreamPtr", &Solver::GetStream, "The stream.")
        .def(
            "GetMaxIterations", [](Solver& one) { return one.Get().GetMaxIterations(); }, Guard(),
            "The most passes of a solve.")
        .def(
            "SetMaxIterations", [](Solver& one, int count) { one.Get().SetMaxIterations(count); },
            py::arg("count"), Guard(), "Sets the most passes of a solve.")
        .def(
            "GetConvergenceTolerance",
            [](Solver& one) { return one.Get().GetConvergenceTolerance(); }, Guard(),
            "The squared error [length^2] plus [deg^2] at which a solve has converged.")
        .def(
            "SetConvergenceTolerance",
            [](Solver& one, double tolerance) { one.Get().SetConvergenceTolerance(tolerance); },
            py::arg("tolerance"), Guard(), "Sets that error.")
        .def(
            "GetCurErrorval", [](Solver& one) { return one.Get().GetCurErrorval(); }, Guard(),
            "The squared error of the latest pass [length^2] plus [deg^2].")
        .def("GetStartStates", &Solver::Start, Guard(),
             "A copy of the values that solves start from; None for the joints' current ones.")
        .def("SetStartingJtStates", &Solver::SetStart, py::arg("states"), Guard(),
             "Has solves start from a copy of these values, or with None from the current ones.");
    solver.def("SolveIK", &Solve, py::arg("target"), py::arg("tool_only") = false,
               py::arg("limit_type") = IkJoint::JtLimitAll, py::arg("lock_rotary") = false,
               "As IkStream.SolveIK, from the start states where they are set. What an analyst\n"
               "raises comes out of this call, and the solver stays usable.");
    py::class_<PseudoInverseSolver, Solver, std::shared_ptr<PseudoInverseSolver>>(
        module, "IkSolverPsuedoInverse",
        "The solver with a step: the truncated pseudo-inverse, rotary steps limited to an eighth\n"
        "of a turn.")
        .def(py::init<const std::shared_ptr<Stream>&>(), py::arg("stream").none(false), Guard(),
             "A solver for a stream.");
}

void BindSample(py::module_& module)
{
    py::class_<Sample, std::shared_ptr<Sample>>(
        module, "IkSolverSampleItem",
        "A start of the hybrid solver and what came of it. The user values and the label are the\n"
        "host's.",
        py::is_final())
        .def(py::init<>(), "An empty one.")
        .def_readwrite("startStates", &Sample::startStates, "Where the sample starts.")
        .def_readwrite("resultStates", &Sample::resultStates, "What the solve from there returned.")
        .def_readonly("stream", &Sample::stream, "The stream.")
        .def_readwrite("userValue1", &Sample::userValue1, "A number of the host's.")
        .def_readwrite("userValue2", &Sample::userValue2, "A number of the host's.")
        .def_readwrite("userValue3", &Sample::userValue3, "A number of the host's.")
        .def_readwrite("label", &Sample::label, "A text of the host's.")
        .def_readwrite("rejected", &Sample::rejected,
                       "Not converged, or the same as an earlier one.")
        .def_readwrite("errorValue", &Sample::errorValue,
                       "The final squared error [length^2] plus [deg^2].");
}

} // namespace

void BindSolvers(py::module_& module)
{
    BindBase(module);
    BindSample(module);
    py::class_<HybridSolver, Solver, std::shared_ptr<HybridSolver>> hybrid(
        module, "IkSolverHybrid",
        "Solves from up to 64 starts, which differ in up to three free rotary joints, keeps the\n"
        "distinct solutions, and returns the first or the analyst's choice.",
        py::custom_type_setup(&AddToCollector));
    hybrid
        .def(py::init<const std::shared_ptr<Stream>&>(), py::arg("stream").none(false), Guard(),
             "A solver for a stream.")
        .def("SetAnalystObj", &HybridSolver::SetAnalyst, py::arg("analyst"),
             "Has an object choose among the solutions; None has the first one returned.")
        .def("GetAnalystObj", &HybridSolver::Analyst, "That object, or None.")
        .def("GetSampleList", &HybridSolver::LastSamples,
             "The samples of the last solve, a new list.");
}

} // namespace bindings
