#include "ListObject.hpp"

#include "Texts.hpp"
#include "Types.hpp"
#include "Values.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/Map.hpp>
#include <brant/zero/Primitive.hpp>
#include <brant/zero/ReferenceSequence.hpp>

#include <algorithm>

namespace zelkor::python::lists {

using brant::zero::AbstractPrimitiveCollection;
using brant::zero::GenericPrimitiveSequenceInterface;
using brant::zero::GenericSequenceInterface;
using brant::zero::PrimitiveSequence;
using brant::zero::ReferenceCollection;
using brant::zero::ReferenceMap;
using brant::zero::ReferenceSequence;
using brant::zero::Value;
using brant::zero::schema::PropertyKind;
using brant::zero::schema::ValueKind;

namespace {

ReferenceCollection& elementsOf(Body& owner, PropertyRow const& row) {
    return static_cast<ReferenceCollection&>(Core::collection(owner, row));
}

/// The positional face of a list of elements. Views and keyed collections have none.
GenericSequenceInterface& sequenceOf(Body& owner, PropertyRow const& row) {
    if (row.kind != PropertyKind::ManyReference)
        fail("NoPositions", placeOf(row) + " has no positions to change; use append and remove");
    return static_cast<GenericSequenceInterface&>(elementsOf(owner, row));
}

GenericPrimitiveSequenceInterface& valuesOf(Body& owner, PropertyRow const& row) {
    return static_cast<GenericPrimitiveSequenceInterface&>(Core::collection(owner, row));
}

PyObject* valueAt(Body& owner, PropertyRow const& row, std::size_t index) {
    switch (row.valueKind) {
    case ValueKind::StdString:
        return toPython(Core::field<PrimitiveSequence<std::string>>(owner, row)[index]);
    case ValueKind::String:
        return toPython(Core::field<PrimitiveSequence<std::u16string>>(owner, row)[index]);
    case ValueKind::Integer:
        return checked(PyLong_FromLong(Core::field<PrimitiveSequence<int>>(owner, row)[index]));
    default:
        return valueToPython(valuesOf(owner, row).genericAt(index));
    }
}

Value toValue(ListObject const& list, PyObject* object, Building& building) {
    return valueFromPython(object, Core::propertyOf(list.row).getType(), placeOf(*list.row), building);
}

} // namespace

Body& ownerOf(ListObject const& list) {
    Body& body = bodyOf(asElement(list.element));
    Core::requireWritable(body);
    return body;
}

Py_ssize_t sizeOf(Body& owner, PropertyRow const& row) {
    switch (row.kind) {
    case PropertyKind::ManyReference:
        return static_cast<Py_ssize_t>(Core::sequence(owner, row).size());
    case PropertyKind::ManyAttribute:
        return static_cast<Py_ssize_t>(valuesOf(owner, row).size());
    default:
        return static_cast<Py_ssize_t>(elementsOf(owner, row).genericSize());
    }
}

PyObject* itemAt(ListObject const& list, Body& owner, std::size_t index) {
    PropertyRow const& row = *list.row;
    if (row.kind == PropertyKind::ManyAttribute) return valueAt(owner, row, index);
    Model const& model = asElement(list.element).model;
    if (row.kind == PropertyKind::ManyReference) {
        ReferenceSequence const& sequence = Core::sequence(owner, row);
        Body* const stored = sequence.slot(index);
        return wrap(stored->isProxy() ? sequence.resolved(index) : stored, model);
    }
    return wrap(elementsOf(owner, row).getAllValues()[index].get(), model);
}

std::size_t positionOf(PropertyRow const& row, Py_ssize_t index, Py_ssize_t size) {
    if (index < 0) index += size;
    if (index < 0 || index >= size)
        fail("OutOfRange", "list index out of range: " + placeOf(row) + " has " + std::to_string(size));
    return static_cast<std::size_t>(index);
}

Change::Change(ListObject const& list) : owner(ownerOf(list)), building(asElement(list.element).model) {
    if (list.row->kind == PropertyKind::Derived || list.row->readOnly()) failReadOnly(*list.row);
}

void insertAt(ListObject const& list, Change& change, std::size_t index, PyObject* value) {
    change.building.open();
    if (list.row->kind == PropertyKind::ManyAttribute)
        return valuesOf(change.owner, *list.row).genericInsert(toValue(list, value, change.building), index);
    ModelElement const target(&memberFromPython(value, *list.row, change.building));
    sequenceOf(change.owner, *list.row).genericInsert(target, index);
}

void append(ListObject const& list, Change& change, PyObject* value) {
    change.building.open();
    if (list.row->kind == PropertyKind::ManyAttribute)
        return valuesOf(change.owner, *list.row).genericAdd(toValue(list, value, change.building));
    ModelElement const target(&memberFromPython(value, *list.row, change.building));
    elementsOf(change.owner, *list.row).genericAdd(target);
}

void replaceAt(ListObject const& list, Change& change, std::size_t index, PyObject* value) {
    change.building.open();
    if (list.row->kind == PropertyKind::ManyAttribute)
        return valuesOf(change.owner, *list.row).genericReplace(toValue(list, value, change.building), index);
    ModelElement const target(&memberFromPython(value, *list.row, change.building));
    sequenceOf(change.owner, *list.row).genericReplace(target, index);
}

void removeAt(ListObject const& list, Change& change, std::size_t index) {
    if (list.row->kind == PropertyKind::ManyAttribute)
        return valuesOf(change.owner, *list.row).genericRemoveAt(index);
    sequenceOf(change.owner, *list.row).genericRemoveAt(index);
}

void clearAll(ListObject const& list, Change& change) {
    change.building.open();
    if (list.row->kind == PropertyKind::ManyAttribute) return valuesOf(change.owner, *list.row).clear();
    elementsOf(change.owner, *list.row).genericClear();
}

bool hasPositions(PropertyRow const& row) {
    return row.kind == PropertyKind::ManyReference || row.kind == PropertyKind::ManyAttribute;
}

std::vector<ModelElement> membersOf(ListObject const& list) {
    return elementsOf(ownerOf(list), *list.row).getAllValues();
}

py::list snapshot(ListObject const& list) {
    py::list members;
    if (!hasPositions(*list.row)) {
        for (ModelElement const& element : membersOf(list))
            members.append(owned(wrap(element.get(), asElement(list.element).model)));
        return members;
    }
    Body& owner = ownerOf(list);
    for (Py_ssize_t i = 0; i < sizeOf(owner, *list.row); ++i)
        members.append(owned(itemAt(list, owner, static_cast<std::size_t>(i))));
    return members;
}

py::list sliceOf(ListObject const& list, PyObject* slice) {
    if (!hasPositions(*list.row)) return snapshot(list)[py::handle(slice)];
    Body& owner = ownerOf(list);
    Py_ssize_t start = 0;
    Py_ssize_t stop = 0;
    Py_ssize_t step = 0;
    checked(PySlice_Unpack(slice, &start, &stop, &step));
    Py_ssize_t const count = PySlice_AdjustIndices(sizeOf(owner, *list.row), &start, &stop, step);
    py::list members;
    for (Py_ssize_t i = 0; i < count; ++i)
        members.append(owned(itemAt(list, owner, static_cast<std::size_t>(start + i * step))));
    return members;
}

PyObject* keyed(ListObject const& list, PyObject* key) {
    auto& map = Core::field<ReferenceMap>(ownerOf(list), *list.row);
    Value const text = Value::own<std::u16string>(map.getQualifierType(), brant::zero::ValueFlags::One,
                                                  textOf(key, placeOf(*list.row)));
    return wrap(map.genericGet(text).get(), asElement(list.element).model);
}

bool isKey(ListObject const& list, PyObject* object) {
    return list.row->kind == PropertyKind::Map &&
           (PyUnicode_Check(object) || PyObject_HasAttrString(object, "__fspath__") != 0);
}

bool holds(ListObject const& list, PyObject* value) {
    if (isKey(list, value)) {
        py::object const found = owned(keyed(list, value));
        return !found.is_none();
    }
    if (list.row->kind == PropertyKind::ManyAttribute) return snapshot(list).contains(py::handle(value));
    if (!isElement(value) || asElement(value).body == nullptr) return false;
    ModelElement const element(asElement(value).body);
    return element && elementsOf(ownerOf(list), *list.row).genericContains(element);
}

void assignSlice(ListObject const& list, PyObject* key, PyObject* value) {
    Change change(list);
    Py_ssize_t start = 0;
    Py_ssize_t stop = 0;
    Py_ssize_t step = 0;
    checked(PySlice_Unpack(key, &start, &stop, &step));
    Py_ssize_t const count = PySlice_AdjustIndices(sizeOf(change.owner, *list.row), &start, &stop, step);
    py::list const fresh =
        value == nullptr ? py::list() : py::list(py::reinterpret_borrow<py::object>(value));
    auto const given = static_cast<Py_ssize_t>(fresh.size());
    if (step != 1 && value != nullptr && given != count)
        fail("InvalidArgument", "attempt to assign sequence of size " + std::to_string(given) +
                                    " to extended slice of size " + std::to_string(count));
    change.building.open();
    std::vector<std::size_t> positions;
    for (Py_ssize_t i = 0; i < count; ++i)
        positions.push_back(static_cast<std::size_t>(start + i * step));
    std::vector<std::size_t> descending = positions;
    std::sort(descending.rbegin(), descending.rend());
    for (std::size_t const position : descending)
        removeAt(list, change, position);
    if (value != nullptr && step != 1) {
        std::vector<std::pair<std::size_t, Py_ssize_t>> order;
        for (Py_ssize_t i = 0; i < count; ++i)
            order.emplace_back(positions[static_cast<std::size_t>(i)], i);
        std::sort(order.begin(), order.end());
        for (auto const& [position, i] : order)
            insertAt(list, change, position, fresh[static_cast<std::size_t>(i)].ptr());
    } else {
        for (Py_ssize_t i = 0; i < given; ++i)
            insertAt(list, change, static_cast<std::size_t>(start + i),
                     fresh[static_cast<std::size_t>(i)].ptr());
    }
    change.building.commit();
}

void extendBy(ListObject const& list, PyObject* values) {
    py::list const members(py::reinterpret_borrow<py::object>(values));
    Change change(list);
    for (py::handle const member : members)
        append(list, change, member.ptr());
    change.building.commit();
}

void removeElement(ListObject const& list, Change& change, PyObject* element) {
    elementsOf(change.owner, *list.row).genericRemove(ModelElement(asElement(element).body));
}

py::list keysOf(ListObject const& list) {
    py::list keys;
    for (Value const& key : Core::field<ReferenceMap>(ownerOf(list), *list.row).getAllKeys())
        keys.append(owned(valueToPython(key)));
    return keys;
}

} // namespace zelkor::python::lists
