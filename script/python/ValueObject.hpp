/// \file
/// Objects of the host's value classes, such as `Ast` and `FinderOptions`.
#pragma once

#include "Python.hpp"

#include <quorl/QuorlClass.hpp>

namespace zelkor::python {

/// \returns the type of a value class. The name must live on.
PyObject* makeValueType(quorl::QuorlClass& quorlClass, char const* name, char const* doc);
/// \returns the object, which Python shares with the host. A new reference.
PyObject* wrapValue(quorl::ObjectRef object);
/// \returns the host's object, null for what is none of a value class.
quorl::QuorlObject* valueObject(PyObject* object) noexcept;

PyObject* readValueObject(PyObject* object, quorl::QuorlPropInfo const& info);
void writeValueObject(PyObject* object, quorl::QuorlPropInfo const& info, PyObject* value);

} // namespace zelkor::python
