/// \file
/// What a property is in a Python class: read and set on an object, a query term on the class.
#pragma once

#include "Build.hpp"
#include "Types.hpp"

#include <quorl/QuorlMembers.hpp>

namespace zelkor::python {

/// \returns a descriptor. With a row, values go straight between the element's field and Python; without one,
/// as properties of value objects have none, through an array of the host. The name must live on. A new
/// reference.
PyObject* makeProperty(quorl::QuorlPropInfo const& info, PropertyRow const* row, char const* name,
                       PyObject* doc);

/// Makes the type of the descriptors; called once.
void initProperty(py::module_& module);

/// Sets the property of a descriptor on an element, in a change that is under way.
void setProperty(PyObject* object, PyObject* descriptor, PyObject* value, Building& building);
/// \returns the row of a descriptor, null for any other object and where it has none.
PropertyRow const* rowOf(PyObject* descriptor);

} // namespace zelkor::python
