/// \file
/// Models, transactions and notices in Python.
#pragma once

#include "Element.hpp"

namespace zelkor::python {

/// Makes the classes; called once.
void initModel(py::module_& module);
void initIo(py::module_& module);
void initFind(py::module_& module);
void initDictionary(py::module_& module);

} // namespace zelkor::python
