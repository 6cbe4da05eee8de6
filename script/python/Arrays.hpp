/// \file
/// The host's arrays to Python values and back.
#pragma once

#include "Python.hpp"

#include <quorl/QuorlType.hpp>

namespace zelkor::python {

/// \returns the value of an array: of one element the element itself, of none None, of several a list;
/// structs are dictionaries. A new reference.
PyObject* arrayToPython(krelArray const& array);

/// \returns an array of the type that an input or property has. "any" takes what Python's type suggests.
/// `where` names the input in a failure.
quorl::ArrayPtr arrayFromPython(PyObject* object, quorl::QuorlType const& type, std::string const& where);

} // namespace zelkor::python
