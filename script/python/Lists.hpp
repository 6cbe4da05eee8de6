/// \file
/// Many-valued properties as Python lists that write through.
#pragma once

#include "Element.hpp"

#include <vector>

namespace zelkor::python {

/// Makes the types of the lists and their iterators; called once.
void initLists(py::module_& module);

/// \returns the list that shows a many-valued property of an element as it is at any moment. A new reference.
PyObject* makeList(PyObject* element, PropertyRow const& row);

/// \returns an iterator that hands out these elements, which it holds; null ones as None. A new reference.
PyObject* makeResults(std::vector<ModelElement> elements, Model const& model);

} // namespace zelkor::python
