#include "ValueObject.hpp"

#include "Arrays.hpp"
#include "Methods.hpp"
#include "Texts.hpp"
#include "Types.hpp"

#include <quorl/Call.hpp>
#include <quorl/Factory.hpp>

#include <new>

namespace zelkor::python {

namespace {

struct ValueObject {
    PyObject_HEAD quorl::ObjectRef object;
};

quorl::ObjectRef& refOf(PyObject* self) {
    return reinterpret_cast<ValueObject*>(self)->object;
}

void dealloc(PyObject* self) {
    refOf(self).~intrusive_ptr();
    freeObject(self);
}

PyObject* wrapAs(PyTypeObject* type, quorl::ObjectRef object) {
    auto* const self = PyObject_New(ValueObject, type);
    if (self == nullptr) throw py::error_already_set();
    new (&self->object) quorl::ObjectRef(std::move(object));
    return reinterpret_cast<PyObject*>(self);
}

/// Positional arguments go to the constructor, keyword arguments set properties: those of a value class
/// depend on nothing but the value.
PyObject* create(PyTypeObject* type, PyObject* arguments, PyObject* keywords) {
    return guarded([&] {
        quorl::QuorlClass* const quorlClass = quorlClassOf(type);
        Arrays const inputs(arguments);
        quorl::ArrayPtr const made = quorl::construct(*quorlClass, inputs.span());
        py::object const self = owned(wrapAs(type, quorl::ObjectRef(omGetArrayElement(*made, 0))));
        if (keywords != nullptr)
            for (auto const& [name, value] : py::reinterpret_borrow<py::dict>(keywords))
                checked(PyObject_SetAttr(self.ptr(), name.ptr(), value.ptr()));
        return py::object(self).release().ptr();
    });
}

/// Two values are equal when the host says so.
PyObject* compare(PyObject* self, PyObject* other, int operation) {
    return guarded([&]() -> PyObject* {
        if ((operation != Py_EQ && operation != Py_NE) || Py_TYPE(self) != Py_TYPE(other))
            return py::reinterpret_borrow<py::object>(Py_NotImplemented).release().ptr();
        Arrays const inputs(py::make_tuple(py::handle(self), py::handle(other)).ptr());
        quorl::Outputs const outputs = quorl::callMethod("eq", inputs.span());
        py::object const equal = owned(arrayToPython(*outputs.at(0)));
        return PyBool_FromLong(equal.ptr() == Py_True ? operation == Py_EQ : operation == Py_NE);
    });
}

PyObject* represent(PyObject* self) {
    return guarded([&] {
        py::list parts;
        for (auto const& property : refOf(self)->getQuorlClass().getProperties()) {
            std::string const name = snakeCase(property->getName());
            if (property->getAttributes() == 0)
                parts.append(name + "=" + py::repr(py::handle(self).attr(name.c_str())).cast<std::string>());
        }
        std::string const text = py::str(", ").attr("join")(parts).cast<std::string>();
        return py::str(std::string(Py_TYPE(self)->tp_name) + "(" + text + ")").release().ptr();
    });
}

quorl::ObjectRef& requireValue(PyObject* object) {
    if (valueObject(object) == nullptr) failType("the object", "a value of the library", object);
    return refOf(object);
}

} // namespace

PyObject* makeValueType(quorl::QuorlClass& quorlClass, char const* name, char const* doc) {
    PyType_Slot slots[] = {{Py_tp_new, reinterpret_cast<void*>(create)},
                           {Py_tp_dealloc, reinterpret_cast<void*>(dealloc)},
                           {Py_tp_richcompare, reinterpret_cast<void*>(compare)},
                           {Py_tp_hash, reinterpret_cast<void*>(PyObject_HashNotImplemented)},
                           {Py_tp_repr, reinterpret_cast<void*>(represent)},
                           {Py_tp_doc, const_cast<char*>(doc)},
                           {0, nullptr}};
    PyType_Spec spec = {name, sizeof(ValueObject), 0, Py_TPFLAGS_DEFAULT, slots};
    PyObject* const type = checked(PyType_FromSpec(&spec));
    Types::get().addOther(quorlClass, type);
    return type;
}

PyObject* wrapValue(quorl::ObjectRef object) {
    auto* const type = reinterpret_cast<PyTypeObject*>(Types::get().other(object->getQuorlClass()));
    return wrapAs(type, std::move(object));
}

quorl::QuorlObject* valueObject(PyObject* object) noexcept {
    return Py_TYPE(object)->tp_dealloc == dealloc ? refOf(object).get() : nullptr;
}

PyObject* readValueObject(PyObject* object, quorl::QuorlPropInfo const& info) {
    quorl::ObjectRef const self = requireValue(object);
    (void)quorl::factory::impl::validateSelfPointer(*self);
    return arrayToPython(*info.getQuorlArray(*self));
}

void writeValueObject(PyObject* object, quorl::QuorlPropInfo const& info, PyObject* value) {
    quorl::ObjectRef const self = requireValue(object);
    (void)quorl::factory::impl::validateSelfPointer(*self);
    quorl::QuorlType const type = quorl::QuorlType::parse(info.getTypeName());
    info.setQuorlArray(*self, *arrayFromPython(value, type, info.getName()));
}

} // namespace zelkor::python
