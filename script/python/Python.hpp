/// \file
/// What all parts of the extension share: Python's headers, and the way of C++ failures into Python.
#pragma once

#include <pybind11/pybind11.h>

#include <concepts>
#include <string>
#include <string_view>
#include <utility>

namespace zelkor::python {

namespace py = pybind11;

/// Turns the exception that is being handled into Python's error: an `Error` of the package for what the
/// library reports, Python's own for what came from Python.
void raiseCurrent() noexcept;

/// Runs `body` for a slot of a C type. \returns what it returns, or `failed` with Python's error set.
template <class Body, class Result>
Result guarded(Result failed, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        raiseCurrent();
        return failed;
    }
}
template <class Body>
PyObject* guarded(Body&& body) noexcept {
    return guarded<Body, PyObject*>(nullptr, std::forward<Body>(body));
}

/// Fails with a message of the Python side, in the catalogue "zelkor:python". The text says what to do.
[[noreturn]] void fail(char const* id, std::string const& text);

/// Fails because a value is of the wrong type. `where` names the property or parameter.
[[noreturn]] void failType(std::string const& where, std::string const& needed, PyObject* given);

/// \returns the object, which must not be null: null means that Python's error is set. Throws it then.
inline PyObject* checked(PyObject* object) {
    if (object == nullptr) throw py::error_already_set();
    return object;
}
inline void checked(int result) {
    if (result < 0) throw py::error_already_set();
}
/// \returns a new reference as an owner.
inline py::object owned(PyObject* object) {
    return py::reinterpret_steal<py::object>(checked(object));
}

/// Gives back the memory of an object of a type that was made at run time, and the object's count on its
/// type.
inline void freeObject(PyObject* self) noexcept {
    PyTypeObject* const type = Py_TYPE(self);
    PyObject_Free(self);
    Py_DECREF(type);
}

} // namespace zelkor::python
