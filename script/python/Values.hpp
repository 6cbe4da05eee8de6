/// \file
/// Values of properties and operations between Python and the model, without an array of the host between.
#pragma once

#include "Build.hpp"
#include "Element.hpp"

#include <brant/zero/Uuid.hpp>
#include <brant/zero/Value.hpp>

namespace zelkor::python {

/// \returns the value of a property, of a collection the list that shows it. A new reference. `object` is the
/// element.
PyObject* readProperty(PyObject* object, PropertyRow const& row);
/// Sets a property as its typed setter does; a collection has its content replaced by what an iterable gives.
/// \requires `building` to be about the element's model.
void writeProperty(PyObject* object, PropertyRow const& row, PyObject* value, Building& building);

/// \returns a value as Python sees it: elements, numbers, texts, literals, lists of them. A new reference.
PyObject* valueToPython(brant::zero::Value const& value);
/// \returns one value of a type. `where` names it in a failure.
brant::zero::Value valueFromPython(PyObject* object, brant::zero::meta::Type const& type,
                                   std::string const& where, Building& building);

/// \returns the element that stands for a member of a property, made if it is pending.
Body& memberFromPython(PyObject* object, PropertyRow const& row, Building& building);
/// \returns the identity that a uuid.UUID or its text gives.
brant::zero::uuid uuidOf(PyObject* object, std::string const& where);
/// \throws CannotSetReadOnlyProperty.
[[noreturn]] void failReadOnly(PropertyRow const& row);
/// \returns "Function.Name".
std::string placeOf(PropertyRow const& row);

} // namespace zelkor::python
