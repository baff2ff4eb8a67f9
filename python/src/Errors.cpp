#include "Bindings.h"

#include <exception>

#include "text/InputError.h"

namespace py = pybind11;

namespace bindings
{

namespace
{

py::handle inputError; // lives as long as the process, as the module does

void SetInputError(const host::InputError& error)
{
    const py::object raised = inputError(error.what());
    raised.attr("file") = error.File();
    raised.attr("line") = error.Line();
    raised.attr("column") = error.Column();
    raised.attr("sentence") = error.Sentence();
    PyErr_SetObject(inputError.ptr(), raised.ptr());
}

} // namespace

void BindErrors(py::module_& module)
{
    inputError = py::exception<host::InputError>(module, "InputError", PyExc_ValueError).release();
    inputError.attr("__doc__") =
        "Something in a file or an argument that its author can put right.\n\n"
        "The message is whole, \"file:line:column: sentence\"; `file`, `line`, `column` and\n"
        "`sentence` hold its parts. Line 0 stands for the file, or the argument, as a whole.";
    py::register_exception_translator([](std::exception_ptr caught) { // NOLINT(performance-*)
        try {
            if (caught) {
                std::rethrow_exception(caught);
            }
        } catch (const host::InputError& error) {
            SetInputError(error);
        }
    });
}

} // namespace bindings
