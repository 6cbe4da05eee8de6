#include "Element.hpp"

#include "Build.hpp"
#include "Property.hpp"
#include "Texts.hpp"
#include "Types.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/Uuid.hpp>

#include <new>

namespace zelkor::python {

namespace {

void dealloc(PyObject* self) {
    ElementObject& object = asElement(self);
    if (object.body != nullptr) object.body->removeRef();
    Py_XDECREF(object.pending);
    object.model.~Model();
    freeObject(self);
}

PyObject* create(PyTypeObject* type, PyObject* arguments, PyObject* keywords) {
    return guarded([&] { return buildElement(type, arguments, keywords); });
}

Py_hash_t hash(PyObject* self) {
    ElementObject const& object = asElement(self);
    void const* const identity = object.body != nullptr ? static_cast<void const*>(object.body) : self;
    auto const value = static_cast<Py_hash_t>(reinterpret_cast<std::uintptr_t>(identity) >> 4);
    return value == -1 ? -2 : value;
}

PyObject* compare(PyObject* self, PyObject* other, int operation) {
    if ((operation != Py_EQ && operation != Py_NE) || !isElement(other)) Py_RETURN_NOTIMPLEMENTED;
    Body const* const body = asElement(self).body;
    bool const same = body != nullptr ? body == asElement(other).body : self == other;
    return PyBool_FromLong(same == (operation == Py_EQ));
}

char const* stateOf(Body const& body) {
    switch (body.liveness()) {
    case brant::zero::Liveness::Destroyed:
        return "destroyed";
    case brant::zero::Liveness::RolledBack:
        return "rolled back";
    case brant::zero::Liveness::ModelGone:
        return "its model is gone";
    default:
        return "";
    }
}

/// \returns what a reader knows the element by: its name or path, or its identity.
std::string labelOf(PyObject* self, Body const& body) {
    for (char const* name : {"name", "path"}) {
        if (PyObject_HasAttrString(self, name) == 0) continue;
        py::object const value = owned(PyObject_GetAttrString(self, name));
        if (py::isinstance<py::str>(value) || py::isinstance<py::bytes>(value))
            return py::repr(value).cast<std::string>();
    }
    return brant::zero::toString(body.uuid());
}

PyObject* represent(PyObject* self) {
    return guarded([&] {
        std::string text = std::string("<") + Py_TYPE(self)->tp_name + ' ';
        Body const* const body = asElement(self).body;
        if (body == nullptr)
            text += "pending";
        else if (!body->valid())
            text += stateOf(*body);
        else
            text += labelOf(self, *body);
        return py::str(text + '>').release().ptr();
    });
}

/// Attributes that are not there are told with the nearest one that is. What a property itself reports passes
/// on.
PyObject* attribute(PyObject* self, PyObject* name) {
    PyObject* const found = PyObject_GenericGetAttr(self, name);
    if (found != nullptr || PyErr_ExceptionMatches(PyExc_AttributeError) == 0) return found;
    py::error_already_set error;
    ElementClass const* const entry = Types::get().find(Py_TYPE(self));
    if (entry == nullptr || error.type().ptr() != PyExc_AttributeError) {
        error.restore();
        return nullptr;
    }
    return guarded([&]() -> PyObject* {
        auto const wanted = py::reinterpret_borrow<py::str>(name).cast<std::string>();
        fail("NoSuchAttribute", std::string(Py_TYPE(self)->tp_name) + " has no attribute '" + wanted + "'" +
                                    suggestion(wanted, entry->names));
    });
}

PyObject* getUuid(PyObject* self, void*) {
    return guarded([&] {
        Body& body = bodyOf(asElement(self));
        py::object const type = py::module_::import("uuid").attr("UUID");
        return type(brant::zero::toString(body.uuid())).release().ptr();
    });
}

PyObject* getModel(PyObject* self, void*) {
    return guarded([&] {
        (void)bodyOf(asElement(self));
        return py::cast(asElement(self).model).release().ptr();
    });
}

PyObject* getContainer(PyObject* self, void*) {
    return guarded([&] { return wrap(bodyOf(asElement(self)).containerBody(), asElement(self).model); });
}

PyObject* getFeature(PyObject* self, void*) {
    return guarded([&] {
        PropertyRow const* const row = bodyOf(asElement(self)).containmentRow();
        return (row == nullptr ? py::object(py::none()) : py::str(snakeCase(row->name))).release().ptr();
    });
}

PyObject* getIsProxy(PyObject* self, void*) {
    return guarded([&] { return PyBool_FromLong(bodyOf(asElement(self)).isProxy()); });
}

PyObject* getIsAlive(PyObject* self, void*) {
    Body const* const body = asElement(self).body;
    return PyBool_FromLong(body != nullptr && body->valid());
}

PyObject* getIsPending(PyObject* self, void*) {
    return PyBool_FromLong(asElement(self).body == nullptr);
}

PyObject* destroy(PyObject* self, PyObject*) {
    return guarded([&] {
        bodyOf(asElement(self)).destroy();
        return py::none().release().ptr();
    });
}

PyGetSetDef members[] = {
    {"uuid", getUuid, nullptr, "Identity, a uuid.UUID; the same after saving and loading.", nullptr},
    {"model", getModel, nullptr, "The model that holds the element.", nullptr},
    {"container", getContainer, nullptr, "The element that owns this one, or None.", nullptr},
    {"containment_feature", getFeature, nullptr, "Name of the container's property that holds it, or None.",
     nullptr},
    {"is_proxy", getIsProxy, nullptr, "True for a placeholder whose target is not in the model.", nullptr},
    {"is_alive", getIsAlive, nullptr, "False once it was destroyed or rolled back, and while it is pending.",
     nullptr},
    {"is_pending", getIsPending, nullptr, "True for an object that is not in a model yet.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr}};

PyMethodDef methods[] = {
    {"destroy", destroy, METH_NOARGS, "Destroys the element and all that it contains, in one transaction."},
    {nullptr, nullptr, 0, nullptr}};

PyTypeObject* makeType(char const* name, PyTypeObject* base, std::vector<PyType_Slot> slots,
                       char const* doc) {
    slots.push_back({Py_tp_dealloc, reinterpret_cast<void*>(dealloc)});
    if (doc != nullptr && *doc != '\0') slots.push_back({Py_tp_doc, const_cast<char*>(doc)});
    slots.push_back({0, nullptr});
    PyType_Spec spec = {name, sizeof(ElementObject), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE,
                        slots.data()};
    py::object const bases =
        base == nullptr ? py::object() : py::make_tuple(py::handle(reinterpret_cast<PyObject*>(base)));
    return reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpecWithBases(&spec, bases.ptr())));
}

PyObject* wrapInto(Body* body, Model const& model) {
    PyTypeObject* const type = Types::get().typeOf(body->classTable());
    auto* const self = PyObject_New(ElementObject, type);
    if (self == nullptr) {
        body->removeRef();
        throw py::error_already_set();
    }
    self->body = body;
    self->pending = nullptr;
    new (&self->model) Model(model);
    return reinterpret_cast<PyObject*>(self);
}

} // namespace

PyTypeObject* makeElementRoot(char const* name, char const* doc) {
    return makeType(name, nullptr,
                    {{Py_tp_new, reinterpret_cast<void*>(create)},
                     {Py_tp_hash, reinterpret_cast<void*>(hash)},
                     {Py_tp_richcompare, reinterpret_cast<void*>(compare)},
                     {Py_tp_repr, reinterpret_cast<void*>(represent)},
                     {Py_tp_getattro, reinterpret_cast<void*>(attribute)},
                     {Py_tp_getset, members},
                     {Py_tp_methods, methods}},
                    doc);
}

PyTypeObject* makeElementType(char const* name, PyTypeObject* base, char const* doc) {
    return makeType(name, base, {}, doc);
}

bool isElement(PyObject const* object) noexcept {
    return Py_TYPE(object)->tp_dealloc == dealloc;
}

PyObject* wrap(Body* body) {
    if (body == nullptr) Py_RETURN_NONE;
    return wrap(body, body->getModel());
}

PyObject* wrap(Body* body, Model const& model) {
    if (body == nullptr) Py_RETURN_NONE;
    body->addRef();
    return wrapInto(body, model);
}

PyObject* wrapCounted(Body* body, Model const& model) {
    return wrapInto(body, model);
}

void refusePending(PyObject* self) {
    fail("Pending", std::string("this ") + Py_TYPE(self)->tp_name +
                        " is in no model yet; make it with a model, or give it to an element that is in one");
}

Body& bodyOf(ElementObject& self) {
    if (self.body == nullptr) [[unlikely]]
        refusePending(reinterpret_cast<PyObject*>(&self));
    awaitModel(self.model.get());
    Core::requireAlive(*self.body);
    return *self.body;
}

bool isModelLike(PyObject* object) {
    return py::isinstance<Model>(object) || isElement(object) || PyObject_HasAttrString(object, "model") != 0;
}

Model modelOf(PyObject* object, std::string const& where) {
    py::object held = py::reinterpret_borrow<py::object>(object);
    if (isElement(object)) {
        (void)bodyOf(asElement(object));
        return asElement(object).model;
    }
    if (!py::isinstance<Model>(held) && PyObject_HasAttrString(object, "model") != 0)
        held = held.attr("model");
    if (!py::isinstance<Model>(held)) failType(where, "Model", object);
    return held.cast<Model>();
}

} // namespace zelkor::python
