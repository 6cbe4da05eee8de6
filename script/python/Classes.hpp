/// \file
/// The host's packages as Python classes.
#pragma once

#include "Python.hpp"

namespace zelkor::python {

/// Loads the library through its entry for script hosts and makes a Python class of each class of its
/// packages: nothing here names one of them. `docs` has the texts of help by dotted names. \returns the
/// classes by package and name.
py::dict makeClasses(py::dict const& docs);

} // namespace zelkor::python
