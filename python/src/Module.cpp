#include "Bindings.h"

// The macro is pybind11's. NOLINTNEXTLINE
PYBIND11_MODULE(_trunnion, module)
{
    module.doc() = "The compiled half of trunnion: import trunnion instead.";
    pybind11::options options;
    options.disable_function_signatures();
    bindings::BindErrors(module);
    bindings::BindXform(module);
    bindings::BindNodes(module);
    bindings::BindStates(module);
    bindings::BindChain(module);
    bindings::BindEndState(module);
    bindings::BindStream(module);
    bindings::BindMachine(module);
    bindings::BindSolvers(module);
    bindings::BindPath(module);
    bindings::BindModel(module);
    bindings::BindPlan(module);
}
