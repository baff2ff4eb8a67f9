#ifndef TRUNNION_PYTHON_BINDINGS_H
#define TRUNNION_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

// What the module consists of, one function a subject, in the order in which they build on each
// other.
namespace bindings
{

void BindErrors(pybind11::module_& module);
void BindXform(pybind11::module_& module);
void BindNodes(pybind11::module_& module);
void BindStates(pybind11::module_& module);
void BindChain(pybind11::module_& module);
void BindEndState(pybind11::module_& module);
void BindStream(pybind11::module_& module);
void BindMachine(pybind11::module_& module);
void BindSolvers(pybind11::module_& module);
void BindPath(pybind11::module_& module);
void BindModel(pybind11::module_& module);
void BindPlan(pybind11::module_& module);

} // namespace bindings

#endif
