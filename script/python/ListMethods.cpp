#include "ListObject.hpp"

#include "Texts.hpp"
#include "Values.hpp"

#include <algorithm>

namespace zelkor::python::lists {

using brant::zero::schema::PropertyKind;

namespace {

PyObject* appendOne(PyObject* self, PyObject* value) {
    return guarded([&] {
        Change change(asList(self));
        append(asList(self), change, value);
        change.building.commit();
        return py::none().release().ptr();
    });
}

PyObject* extend(PyObject* self, PyObject* values) {
    return guarded([&] {
        extendBy(asList(self), values);
        return py::none().release().ptr();
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
            removeElement(list, change, member.ptr());
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
        return keysOf(list).release().ptr();
    });
}

PyCFunction withKeywords(PyCFunctionWithKeywords function) {
    return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

} // namespace

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

} // namespace zelkor::python::lists
