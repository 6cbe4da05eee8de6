#include "Property.hpp"

#include "Arrays.hpp"
#include "Query.hpp"
#include "Texts.hpp"
#include "ValueObject.hpp"
#include "Values.hpp"

#include <structmember.h>

namespace zelkor::python {

namespace {

struct PropertyObject {
    PyObject_HEAD quorl::QuorlPropInfo const* info;
    PropertyRow const* row;
    char const* name;
    PyObject* doc;
};

PyTypeObject* type = nullptr;

PropertyObject& asProperty(PyObject* self) {
    return *reinterpret_cast<PropertyObject*>(self);
}

void dealloc(PyObject* self) {
    Py_XDECREF(asProperty(self).doc);
    freeObject(self);
}

/// A descriptor can be called on anything; only elements that have the property get further.
bool fits(PropertyObject const& self, PyObject* object) {
    if (!isElement(object)) return false;
    Body const* const body = asElement(object).body;
    if (body != nullptr) return body->classTable().conformsTo(*self.row->owner);
    ElementClass const* const entry = Types::get().find(Py_TYPE(object));
    return entry != nullptr && entry->table->conformsTo(*self.row->owner);
}

void requireFitting(PropertyObject const& self, PyObject* object) {
    if (!fits(self, object)) failType(self.name, pythonName(self.row->owner->scriptName), object);
}

PyObject* get(PyObject* self, PyObject* object, PyObject* owner) {
    PropertyObject const& property = asProperty(self);
    return guarded([&]() -> PyObject* {
        if (object == nullptr || object == Py_None) {
            if (property.row != nullptr && owner != nullptr) return makeTerm(*property.row, owner, self);
            return py::reinterpret_borrow<py::object>(self).release().ptr();
        }
        if (property.row == nullptr) return readValueObject(object, *property.info);
        requireFitting(property, object);
        return readProperty(object, *property.row);
    });
}

int set(PyObject* self, PyObject* object, PyObject* value) {
    PropertyObject const& property = asProperty(self);
    return guarded(-1, [&] {
        if (value == nullptr)
            fail("NotDeletable", std::string("the property '") + property.name + "' cannot be deleted");
        if (property.row == nullptr) {
            writeValueObject(object, *property.info, value);
            return 0;
        }
        requireFitting(property, object);
        (void)bodyOf(asElement(object));
        Building building(asElement(object).model);
        setProperty(object, self, value, building);
        building.commit();
        return 0;
    });
}

PyObject* represent(PyObject* self) {
    PropertyObject const& property = asProperty(self);
    return guarded([&] {
        std::string const owner =
            property.row == nullptr ? std::string() : std::string(property.row->owner->shortName) + '.';
        return py::str("<property " + owner + property.name + '>').release().ptr();
    });
}

PyObject* getName(PyObject* self, void*) {
    return PyUnicode_FromString(asProperty(self).name);
}

PyMemberDef members[] = {{"__doc__", T_OBJECT, offsetof(PropertyObject, doc), READONLY, nullptr},
                         {nullptr, 0, 0, 0, nullptr}};
PyGetSetDef accessors[] = {{"__name__", getName, nullptr, nullptr, nullptr},
                           {nullptr, nullptr, nullptr, nullptr, nullptr}};

} // namespace

void initProperty(py::module_& module) {
    static PyType_Slot slots[] = {{Py_tp_dealloc, reinterpret_cast<void*>(dealloc)},
                                  {Py_tp_descr_get, reinterpret_cast<void*>(get)},
                                  {Py_tp_descr_set, reinterpret_cast<void*>(set)},
                                  {Py_tp_repr, reinterpret_cast<void*>(represent)},
                                  {Py_tp_members, members},
                                  {Py_tp_getset, accessors},
                                  {0, nullptr}};
    static PyType_Spec spec = {"zelkor.Property", sizeof(PropertyObject), 0,
                               Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
    type = reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
    module.attr("Property") = py::handle(reinterpret_cast<PyObject*>(type));
}

PyObject* makeProperty(quorl::QuorlPropInfo const& info, PropertyRow const* row, char const* name,
                       PyObject* doc) {
    auto* const self = PyObject_New(PropertyObject, type);
    if (self == nullptr) throw py::error_already_set();
    self->info = &info;
    self->row = row;
    self->name = name;
    self->doc = py::reinterpret_borrow<py::object>(doc).release().ptr();
    return reinterpret_cast<PyObject*>(self);
}

void setProperty(PyObject* object, PyObject* descriptor, PyObject* value, Building& building) {
    PropertyObject const& property = asProperty(descriptor);
    if (property.info->isReadOnly()) failReadOnly(*property.row);
    writeProperty(object, *property.row, value, building);
}

PropertyRow const* rowOf(PyObject* descriptor) {
    return Py_TYPE(descriptor) == type ? asProperty(descriptor).row : nullptr;
}

} // namespace zelkor::python
