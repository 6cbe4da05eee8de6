/// \file
/// The inside of the lists: what their slots and methods do to the collection behind.
#pragma once

#include "Build.hpp"
#include "Lists.hpp"

#include <brant/zero/Value.hpp>

namespace zelkor::python::lists {

/// A many-valued property of one element. It holds nothing of what the list has in it.
struct ListObject {
    PyObject_HEAD PyObject* element;
    PropertyRow const* row;
};

inline ListObject& asList(PyObject* self) {
    return *reinterpret_cast<ListObject*>(self);
}

/// \returns the element, ready for use. \throws DeadHandle, CannotModifyProxy.
Body& ownerOf(ListObject const& list);
Py_ssize_t sizeOf(Body& owner, PropertyRow const& row);
/// \returns a new reference. \requires index < size.
PyObject* itemAt(ListObject const& list, Body& owner, std::size_t index);
/// \returns the position that an index of Python means. \throws OutOfRange.
std::size_t positionOf(PropertyRow const& row, Py_ssize_t index, Py_ssize_t size);
/// \returns whether members are found by position; else every look at one takes a walk over all.
bool hasPositions(PropertyRow const& row);
/// \returns the members of a list of elements.
std::vector<ModelElement> membersOf(ListObject const& list);
/// \returns all members as a Python list.
py::list snapshot(ListObject const& list);
py::list sliceOf(ListObject const& list, PyObject* slice);
/// \returns whether the object can be a key of the list.
bool isKey(ListObject const& list, PyObject* object);
/// \returns what stands under a key, or None. \requires a key.
PyObject* keyed(ListObject const& list, PyObject* key);
py::list keysOf(ListObject const& list);
bool holds(ListObject const& list, PyObject* value);

/// One change of the list and its owner.
struct Change {
    /// \throws CannotSetReadOnlyProperty.
    explicit Change(ListObject const& list);
    Body& owner;
    Building building;
};

// Steps of a change. Values may be pending elements.

void insertAt(ListObject const& list, Change& change, std::size_t index, PyObject* value);
void append(ListObject const& list, Change& change, PyObject* value);
void replaceAt(ListObject const& list, Change& change, std::size_t index, PyObject* value);
void removeAt(ListObject const& list, Change& change, std::size_t index);
/// Takes an element out. \requires the list to hold it.
void removeElement(ListObject const& list, Change& change, PyObject* element);
void clearAll(ListObject const& list, Change& change);

/// Replaces a slice in one transaction; null takes it out.
void assignSlice(ListObject const& list, PyObject* slice, PyObject* value);
void extendBy(ListObject const& list, PyObject* values);

/// What lists can do beside Python's slots.
extern PyMethodDef methods[];

} // namespace zelkor::python::lists
