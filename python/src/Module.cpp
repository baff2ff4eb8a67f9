#include "Bindings.h"
#include "Unlocked.h"

#include <cstddef>

namespace py = pybind11;

namespace
{

void* RefuseUnmade(std::size_t /*size*/)
{
    throw py::type_error("the object is not made yet: its __init__ was not called");
}

/// pybind11 gives an object that comes from `__new__` alone memory that nobody initialises, where a
/// method asks for it. Here it asks this function instead.
void RequireInit(const py::module_& module)
{
    for (const auto& [name, value] : py::cast<py::dict>(module.attr("__dict__"))) {
        if (PyType_Check(value.ptr()) != 0) {
            auto* const type = reinterpret_cast<PyTypeObject*>(value.ptr());
            if (py::detail::type_info* const info = py::detail::get_type_info(type)) {
                info->operator_new = &RefuseUnmade;
            }
        }
    }
}

} // namespace

// The macro is pybind11's. NOLINTNEXTLINE
PYBIND11_MODULE(_trunnion, module)
{
    module.doc() = "The compiled half of trunnion: import trunnion instead.";
    py::options options;
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
    RequireInit(module);
    bindings::Unlocked::WaitAtExit();
}
