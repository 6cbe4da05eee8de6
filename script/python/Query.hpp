/// \file
/// Queries with Python expressions: terms, conditions, results.
#pragma once

#include "Conditions.hpp"

namespace zelkor::python {

/// \returns what a property is when it is read on a class: a term, or the descriptor itself where queries
/// have no term. A new reference.
PyObject* makeTerm(PropertyRow const& row, PyObject* owner, PyObject* descriptor);

/// Makes the classes of terms, conditions and queries; called once.
void initQuery(py::module_& module);

} // namespace zelkor::python
