#include "Lists.hpp"

#include "Build.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "Values.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/Map.hpp>
#include <brant/zero/Primitive.hpp>
#include <brant/zero/ReferenceSequence.hpp>

#include <algorithm>

namespace zelkor::python {

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

struct ListObject {
    PyObject_HEAD PyObject* element;
    PropertyRow const* row;
};

struct ListIterator {
    PyObject_HEAD PyObject* list; ///< null behind the end
    Py_ssize_t index;
};

struct Results {
    PyObject_HEAD std::vector<ModelElement> elements;
    std::size_t index;
    Model model;
};

PyTypeObject* listType = nullptr;
PyTypeObject* iteratorType = nullptr;
PyTypeObject* resultsType = nullptr;

ListObject& asList(PyObject* self) {
    return *reinterpret_cast<ListObject*>(self);
}

Body& ownerOf(ListObject const& list) {
    Body& body = bodyOf(asElement(list.element));
    Core::requireWritable(body);
    return body;
}

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

/// \requires index < size.
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

/// One change of the list and its owner.
struct Change {
    explicit Change(ListObject const& list) : owner(ownerOf(list)), building(asElement(list.element).model) {
        if (list.row->kind == PropertyKind::Derived || list.row->readOnly()) failReadOnly(*list.row);
    }
    Body& owner;
    Building building;
};

Value toValue(ListObject const& list, PyObject* object, Building& building) {
    return valueFromPython(object, Core::propertyOf(list.row).getType(), placeOf(*list.row), building);
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

/// \returns all members as a Python list.
py::list snapshot(ListObject const& list) {
    Body& owner = ownerOf(list);
    py::list members;
    if (list.row->kind != PropertyKind::ManyReference && list.row->kind != PropertyKind::ManyAttribute) {
        for (ModelElement const& element : elementsOf(owner, *list.row).getAllValues())
            members.append(owned(wrap(element.get(), asElement(list.element).model)));
        return members;
    }
    for (Py_ssize_t i = 0; i < sizeOf(owner, *list.row); ++i)
        members.append(owned(itemAt(list, owner, static_cast<std::size_t>(i))));
    return members;
}

// Slots.

void dealloc(PyObject* self) {
    Py_XDECREF(asList(self).element);
    freeObject(self);
}

Py_ssize_t length(PyObject* self) {
    return guarded(Py_ssize_t(-1), [&] { return sizeOf(ownerOf(asList(self)), *asList(self).row); });
}

PyObject* keyed(ListObject const& list, PyObject* key) {
    auto& map = Core::field<ReferenceMap>(ownerOf(list), *list.row);
    Value const text = Value::own<std::u16string>(map.getQualifierType(), brant::zero::ValueFlags::One,
                                                  textOf(key, placeOf(*list.row)));
    return wrap(map.genericGet(text).get(), asElement(list.element).model);
}

PyObject* item(PyObject* self, Py_ssize_t index) {
    return guarded([&] {
        ListObject const& list = asList(self);
        Body& owner = ownerOf(list);
        return itemAt(list, owner, positionOf(*list.row, index, sizeOf(owner, *list.row)));
    });
}

bool isKey(ListObject const& list, PyObject* object) {
    return list.row->kind == PropertyKind::Map &&
           (PyUnicode_Check(object) || PyObject_HasAttrString(object, "__fspath__") != 0);
}

PyObject* subscript(PyObject* self, PyObject* key) {
    return guarded([&]() -> PyObject* {
        ListObject const& list = asList(self);
        if (isKey(list, key)) {
            PyObject* const found = keyed(list, key);
            if (found != Py_None) return found;
            Py_DECREF(found);
            py::list keys;
            for (Value const& known : Core::field<ReferenceMap>(ownerOf(list), *list.row).getAllKeys())
                keys.append(owned(valueToPython(known)));
            std::string const name = py::str(py::handle(key)).cast<std::string>();
            fail("NotFound",
                 placeOf(*list.row) + " has nothing under '" + name + "'" + suggestion(name, keys));
        }
        if (PySlice_Check(key)) return snapshot(list)[py::handle(key)].cast<py::object>().release().ptr();
        if (!PyIndex_Check(key)) failType(placeOf(*list.row) + "[]", "int or slice", key);
        Py_ssize_t const index = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (index == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        return checked(item(self, index));
    });
}

/// Replaces a slice: in place where it steps, else by taking out and putting in.
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

int assign(PyObject* self, PyObject* key, PyObject* value) {
    return guarded(-1, [&] {
        ListObject const& list = asList(self);
        if (PySlice_Check(key)) {
            assignSlice(list, key, value);
            return 0;
        }
        Change change(list);
        if (isKey(list, key) && value == nullptr) {
            py::object const member = owned(subscript(self, key));
            elementsOf(change.owner, *list.row).genericRemove(ModelElement(&bodyOf(asElement(member.ptr()))));
            return 0;
        }
        if (!PyIndex_Check(key)) failType(placeOf(*list.row) + "[]", "int or slice", key);
        Py_ssize_t const index = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (index == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        std::size_t const position = positionOf(*list.row, index, sizeOf(change.owner, *list.row));
        if (value == nullptr)
            removeAt(list, change, position);
        else
            replaceAt(list, change, position, value);
        change.building.commit();
        return 0;
    });
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

int contains(PyObject* self, PyObject* value) {
    return guarded(-1, [&] { return holds(asList(self), value) ? 1 : 0; });
}

PyObject* iterate(PyObject* self) {
    return guarded([&]() -> PyObject* {
        ListObject const& list = asList(self);
        Body& owner = ownerOf(list);
        if (list.row->kind != PropertyKind::ManyReference && list.row->kind != PropertyKind::ManyAttribute)
            return makeResults(elementsOf(owner, *list.row).getAllValues(), asElement(list.element).model);
        auto* const iterator = PyObject_New(ListIterator, iteratorType);
        if (iterator == nullptr) throw py::error_already_set();
        Py_INCREF(self);
        iterator->list = self;
        iterator->index = 0;
        return reinterpret_cast<PyObject*>(iterator);
    });
}

PyObject* compare(PyObject* self, PyObject* other, int operation) {
    return guarded([&]() -> PyObject* {
        bool const comparable = PyList_Check(other) || PyTuple_Check(other) || Py_TYPE(other) == listType;
        if ((operation != Py_EQ && operation != Py_NE) || !comparable)
            return py::reinterpret_borrow<py::object>(Py_NotImplemented).release().ptr();
        bool const same = snapshot(asList(self)).equal(py::list(py::reinterpret_borrow<py::object>(other)));
        return PyBool_FromLong(same == (operation == Py_EQ));
    });
}

PyObject* represent(PyObject* self) {
    return guarded([&] { return py::repr(snapshot(asList(self))).release().ptr(); });
}

// Methods.

PyObject* appendOne(PyObject* self, PyObject* value) {
    return guarded([&] {
        Change change(asList(self));
        append(asList(self), change, value);
        change.building.commit();
        return py::none().release().ptr();
    });
}

void extendBy(ListObject const& list, PyObject* values) {
    py::list const members(py::reinterpret_borrow<py::object>(values));
    Change change(list);
    for (py::handle const member : members)
        append(list, change, member.ptr());
    change.building.commit();
}

PyObject* extend(PyObject* self, PyObject* values) {
    return guarded([&] {
        extendBy(asList(self), values);
        return py::none().release().ptr();
    });
}

PyObject* inPlaceAdd(PyObject* self, PyObject* values) {
    return guarded([&] {
        extendBy(asList(self), values);
        return py::reinterpret_borrow<py::object>(self).release().ptr();
    });
}

PyObject* insert(PyObject* self, PyObject* arguments) {
    Py_ssize_t index = 0;
    PyObject* value = nullptr;
    if (PyArg_ParseTuple(arguments, "nO:insert", &index, &value) == 0) return nullptr;
    return guarded([&] {
        ListObject const& list = asList(self);
        Change change(list);
        Py_ssize_t const size = sizeOf(change.owner, *list.row);
        if (index < 0) index = std::max<Py_ssize_t>(index + size, 0);
        insertAt(list, change, static_cast<std::size_t>(std::min(index, size)), value);
        change.building.commit();
        return py::none().release().ptr();
    });
}

/// \returns the position, or the size when the value is not there.
Py_ssize_t find(ListObject const& list, Body& owner, PyObject* value, Py_ssize_t start, Py_ssize_t stop) {
    for (Py_ssize_t i = start; i < std::min(stop, sizeOf(owner, *list.row)); ++i) {
        py::object const member = owned(itemAt(list, owner, static_cast<std::size_t>(i)));
        if (member.equal(py::handle(value))) return i;
    }
    return sizeOf(owner, *list.row);
}

[[noreturn]] void failMissing(ListObject const& list, PyObject* value) {
    fail("NotInList", py::repr(value).cast<std::string>() + " is not in " + placeOf(*list.row));
}

PyObject* removeOne(PyObject* self, PyObject* value) {
    return guarded([&] {
        ListObject const& list = asList(self);
        Change change(list);
        if (list.row->kind == PropertyKind::ManyAttribute) {
            Py_ssize_t const index = find(list, change.owner, value, 0, PY_SSIZE_T_MAX);
            if (index == sizeOf(change.owner, *list.row)) failMissing(list, value);
            removeAt(list, change, static_cast<std::size_t>(index));
        } else {
            if (!holds(list, value)) failMissing(list, value);
            py::object const member =
                isKey(list, value) ? owned(keyed(list, value)) : py::reinterpret_borrow<py::object>(value);
            elementsOf(change.owner, *list.row).genericRemove(ModelElement(asElement(member.ptr()).body));
        }
        return py::none().release().ptr();
    });
}

PyObject* pop(PyObject* self, PyObject* arguments) {
    Py_ssize_t index = -1;
    if (PyArg_ParseTuple(arguments, "|n:pop", &index) == 0) return nullptr;
    return guarded([&] {
        ListObject const& list = asList(self);
        Change change(list);
        std::size_t const position = positionOf(*list.row, index, sizeOf(change.owner, *list.row));
        py::object const member = owned(itemAt(list, change.owner, position));
        removeAt(list, change, position);
        return py::object(member).release().ptr();
    });
}

PyObject* clear(PyObject* self, PyObject*) {
    return guarded([&] {
        Change change(asList(self));
        clearAll(asList(self), change);
        change.building.commit();
        return py::none().release().ptr();
    });
}

PyObject* index(PyObject* self, PyObject* arguments) {
    PyObject* value = nullptr;
    Py_ssize_t start = 0;
    Py_ssize_t stop = PY_SSIZE_T_MAX;
    if (PyArg_ParseTuple(arguments, "O|nn:index", &value, &start, &stop) == 0) return nullptr;
    return guarded([&] {
        py::list const members = snapshot(asList(self));
        if (!members.contains(py::handle(value))) failMissing(asList(self), value);
        return members.attr("index")(py::handle(value), start, stop).release().ptr();
    });
}

PyObject* count(PyObject* self, PyObject* value) {
    return guarded([&] { return snapshot(asList(self)).attr("count")(py::handle(value)).release().ptr(); });
}

/// Gives the list the order that a copy of it gets.
PyObject* reorder(PyObject* self, char const* how, PyObject* arguments, PyObject* keywords) {
    return guarded([&] {
        py::list const members = snapshot(asList(self));
        py::object const method = members.attr(how);
        (void)owned(PyObject_Call(method.ptr(), arguments, keywords));
        py::slice const all(0, static_cast<Py_ssize_t>(members.size()), 1);
        assignSlice(asList(self), all.ptr(), members.ptr());
        return py::none().release().ptr();
    });
}

PyObject* sort(PyObject* self, PyObject* arguments, PyObject* keywords) {
    return reorder(self, "sort", arguments, keywords);
}

PyObject* reverse(PyObject* self, PyObject* arguments, PyObject* keywords) {
    return reorder(self, "reverse", arguments, keywords);
}

PyObject* copy(PyObject* self, PyObject*) {
    return guarded([&] { return snapshot(asList(self)).release().ptr(); });
}

PyObject* keys(PyObject* self, PyObject*) {
    return guarded([&] {
        ListObject const& list = asList(self);
        if (list.row->kind != PropertyKind::Map) fail("NoKeys", placeOf(*list.row) + " has no keys");
        py::list result;
        for (Value const& key : Core::field<ReferenceMap>(ownerOf(list), *list.row).getAllKeys())
            result.append(owned(valueToPython(key)));
        return result.release().ptr();
    });
}

PyCFunction withKeywords(PyCFunctionWithKeywords function) {
    return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

PyMethodDef methods[] = {
    {"append", appendOne, METH_O, "Adds a value at the end; a unique list takes each element once."},
    {"extend", extend, METH_O, "Adds all values of an iterable, in one transaction."},
    {"insert", insert, METH_VARARGS, "Inserts a value in front of a position."},
    {"remove", removeOne, METH_O, "Takes a value out; ValueError if it is not there."},
    {"pop", pop, METH_VARARGS, "Takes out and returns the value at a position, the last one by default."},
    {"clear", clear, METH_NOARGS, "Takes everything out."},
    {"index", index, METH_VARARGS, "The first position of a value; ValueError if it is not there."},
    {"count", count, METH_O, "How often a value is there."},
    {"sort", withKeywords(sort), METH_VARARGS | METH_KEYWORDS,
     "Sorts as list.sort does, in one transaction."},
    {"reverse", withKeywords(reverse), METH_VARARGS | METH_KEYWORDS,
     "Reverses the order, in one transaction."},
    {"copy", copy, METH_NOARGS, "A plain list of what is in this one now."},
    {"keys", keys, METH_NOARGS, "The keys of a keyed list, in order."},
    {nullptr, nullptr, 0, nullptr}};

void deallocIterator(PyObject* self) {
    Py_XDECREF(reinterpret_cast<ListIterator*>(self)->list);
    freeObject(self);
}

/// The list may grow and shrink meanwhile, as Python's own may.
PyObject* nextOfList(PyObject* self) {
    auto& iterator = *reinterpret_cast<ListIterator*>(self);
    if (iterator.list == nullptr) return nullptr;
    return guarded([&]() -> PyObject* {
        ListObject const& list = asList(iterator.list);
        Body& owner = ownerOf(list);
        if (iterator.index < sizeOf(owner, *list.row))
            return itemAt(list, owner, static_cast<std::size_t>(iterator.index++));
        Py_CLEAR(iterator.list);
        return nullptr;
    });
}

void deallocResults(PyObject* self) {
    auto* const results = reinterpret_cast<Results*>(self);
    using Elements = std::vector<ModelElement>;
    results->elements.~Elements();
    results->model.~Model();
    freeObject(self);
}

PyObject* nextResult(PyObject* self) {
    auto& results = *reinterpret_cast<Results*>(self);
    if (results.index >= results.elements.size()) return nullptr;
    return guarded([&] { return wrap(results.elements[results.index++].get(), results.model); });
}

PyTypeObject* makeType(char const* name, int size, PyType_Slot* slots) {
    PyType_Spec spec = {name, size, 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
    return reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
}

template <class Function>
PyType_Slot slot(int id, Function function) {
    return {id, reinterpret_cast<void*>(function)};
}

} // namespace

void initLists(py::module_& module) {
    PyType_Slot list[] = {slot(Py_tp_dealloc, dealloc),
                          slot(Py_sq_length, length),
                          slot(Py_mp_length, length),
                          slot(Py_sq_item, item),
                          slot(Py_mp_subscript, subscript),
                          slot(Py_mp_ass_subscript, assign),
                          slot(Py_sq_contains, contains),
                          slot(Py_sq_inplace_concat, inPlaceAdd),
                          slot(Py_tp_iter, iterate),
                          slot(Py_tp_richcompare, compare),
                          slot(Py_tp_hash, PyObject_HashNotImplemented),
                          slot(Py_tp_repr, represent),
                          {Py_tp_methods, methods},
                          {0, nullptr}};
    listType = makeType("zelkor.List", sizeof(ListObject), list);
    PyType_Slot iterator[] = {slot(Py_tp_dealloc, deallocIterator),
                              slot(Py_tp_iter, PyObject_SelfIter),
                              slot(Py_tp_iternext, nextOfList),
                              {0, nullptr}};
    iteratorType = makeType("zelkor.ListIterator", sizeof(ListIterator), iterator);
    PyType_Slot results[] = {slot(Py_tp_dealloc, deallocResults),
                             slot(Py_tp_iter, PyObject_SelfIter),
                             slot(Py_tp_iternext, nextResult),
                             {0, nullptr}};
    resultsType = makeType("zelkor.Results", sizeof(Results), results);
    module.attr("List") = py::handle(reinterpret_cast<PyObject*>(listType));
}

PyObject* makeList(PyObject* element, PropertyRow const& row) {
    auto* const list = PyObject_New(ListObject, listType);
    if (list == nullptr) throw py::error_already_set();
    Py_INCREF(element);
    list->element = element;
    list->row = &row;
    return reinterpret_cast<PyObject*>(list);
}

PyObject* makeResults(std::vector<ModelElement> elements, Model const& model) {
    auto* const results = PyObject_New(Results, resultsType);
    if (results == nullptr) throw py::error_already_set();
    new (&results->elements) std::vector<ModelElement>(std::move(elements));
    results->index = 0;
    new (&results->model) Model(model);
    return reinterpret_cast<PyObject*>(results);
}

} // namespace zelkor::python
