#include "Lists.hpp"

#include "ListObject.hpp"
#include "Texts.hpp"
#include "Values.hpp"

namespace zelkor::python {

using namespace lists;

namespace {

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

void dealloc(PyObject* self) {
    Py_XDECREF(asList(self).element);
    freeObject(self);
}

Py_ssize_t length(PyObject* self) {
    return guarded(Py_ssize_t(-1), [&] { return sizeOf(ownerOf(asList(self)), *asList(self).row); });
}

PyObject* item(PyObject* self, Py_ssize_t index) {
    return guarded([&] {
        ListObject const& list = asList(self);
        Body& owner = ownerOf(list);
        return itemAt(list, owner, positionOf(*list.row, index, sizeOf(owner, *list.row)));
    });
}

PyObject* subscript(PyObject* self, PyObject* key) {
    return guarded([&]() -> PyObject* {
        ListObject const& list = asList(self);
        if (isKey(list, key)) {
            PyObject* const found = keyed(list, key);
            if (found != Py_None) return found;
            Py_DECREF(found);
            std::string const name = py::str(py::handle(key)).cast<std::string>();
            fail("NotFound",
                 placeOf(*list.row) + " has nothing under '" + name + "'" + suggestion(name, keysOf(list)));
        }
        if (PySlice_Check(key)) return sliceOf(list, key).release().ptr();
        if (!PyIndex_Check(key)) failType(placeOf(*list.row) + "[]", "int or slice", key);
        Py_ssize_t const index = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (index == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        return checked(item(self, index));
    });
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
            removeElement(list, change, member.ptr());
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

int contains(PyObject* self, PyObject* value) {
    return guarded(-1, [&] { return holds(asList(self), value) ? 1 : 0; });
}

PyObject* iterate(PyObject* self) {
    return guarded([&]() -> PyObject* {
        ListObject const& list = asList(self);
        if (!hasPositions(*list.row)) return makeResults(membersOf(list), asElement(list.element).model);
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

PyObject* inPlaceAdd(PyObject* self, PyObject* values) {
    return guarded([&] {
        extendBy(asList(self), values);
        return py::reinterpret_borrow<py::object>(self).release().ptr();
    });
}

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
