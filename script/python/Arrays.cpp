#include "Arrays.hpp"

#include "Element.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "ValueObject.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/meta/Class.hpp>
#include <quorl/Factory.hpp>

#include <limits>

namespace zelkor::python {

using quorl::ArrayKind;
using quorl::ArrayPtr;
using quorl::NumericType;
using quorl::QuorlType;

namespace {

py::object numberAt(krelArray const& array, std::size_t i) {
    switch (omGetNumericType(array)) {
    case NumericType::Logical:
        return py::bool_(omGetNumbers<bool>(array)[i]);
    case NumericType::Double:
        return py::float_(omGetNumbers<double>(array)[i]);
    case NumericType::Int32:
        return py::int_(omGetNumbers<std::int32_t>(array)[i]);
    case NumericType::Int64:
        return py::int_(omGetNumbers<std::int64_t>(array)[i]);
    case NumericType::Uint32:
        return py::int_(omGetNumbers<std::uint32_t>(array)[i]);
    default:
        return py::int_(omGetNumbers<std::uint64_t>(array)[i]);
    }
}

py::object structAt(krelArray const& array, std::size_t i) {
    py::dict fields;
    for (std::string const& field : omGetFields(array)) {
        krelArray const* const value = omGetField(array, i, field);
        fields[field.c_str()] = value == nullptr ? py::object(py::none()) : owned(arrayToPython(*value));
    }
    return fields;
}

/// The body of a handle class is the handle itself.
template <class Handle>
Handle const& handleOf(quorl::QuorlObject const& object) {
    return *static_cast<Handle const*>(object.getSelfPointer());
}

py::object objectAt(krelArray const& array, std::size_t i) {
    quorl::QuorlObject* const object = omGetArrayElement(array, i);
    if (object == nullptr) return py::none();
    quorl::QuorlClass& quorlClass = object->getQuorlClass();
    if (!quorlClass.getInfo().isHandleClass()) return owned(wrapValue(quorl::ObjectRef(object)));
    if (quorlClass.getName().text() == "brant.zero.Model") return py::cast(handleOf<Model>(*object));
    if (Types::get().other(quorlClass) != nullptr) return owned(wrapValue(quorl::ObjectRef(object)));
    return owned(wrap(handleOf<ModelElement>(*object).get()));
}

py::object literalAt(krelArray const& array, std::size_t i) {
    std::int32_t const number = omGetNumbers<std::int32_t>(omGetUnderlyingArray(array))[i];
    EnumClass const* const type = Types::get().findEnum(omGetClassName(array).text());
    return type == nullptr ? py::object(py::int_(number)) : owned(type->member(number));
}

py::object elementAt(krelArray const& array, std::size_t i) {
    switch (omGetKind(array)) {
    case ArrayKind::Numeric:
        return numberAt(array, i);
    case ArrayKind::Char:
        return owned(toPython(omGetChars(array)));
    case ArrayKind::String:
        return owned(toPython(omGetString(array, i)));
    case ArrayKind::Struct:
        return structAt(array, i);
    case ArrayKind::Quorl:
        return objectAt(array, i);
    default:
        return literalAt(array, i);
    }
}

// Python to arrays.

ArrayPtr elementArray(PyObject* object, std::string const& where) {
    Body& body = bodyOf(asElement(object));
    (void)where;
    auto const name = quorl::internal::makeInterned(body.classTable().scriptName);
    return omCreateQuorlScalar(quorl::factory::basic::BindingRegistry::announce(&body, name));
}

ArrayPtr modelArray(Model const& model) {
    awaitModel(model.get());
    auto const name = quorl::internal::makeInterned("brant.zero.Model");
    return omCreateQuorlScalar(quorl::factory::basic::BindingRegistry::announce(model.get(), name));
}

ArrayPtr integerArray(PyObject* object, std::string const& where) {
    int overflow = 0;
    long const number = PyLong_AsLongAndOverflow(object, &overflow);
    if (overflow == 0) return omCreateNumericScalar<std::int64_t>(number);
    std::uint64_t const large = overflow > 0 ? PyLong_AsUnsignedLong(object) : 0;
    if (overflow < 0 || PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        fail("InvalidValue", where + ": the number has more than 64 bits");
    }
    return omCreateNumericScalar<std::uint64_t>(large);
}

ArrayPtr anyArray(PyObject* object, std::string const& where);

ArrayPtr structArray(PyObject* object, std::string const& where) {
    auto const values = py::reinterpret_borrow<py::dict>(object);
    std::vector<std::string> fields;
    for (auto const& [name, value] : values)
        fields.push_back(bytesOf(name.ptr(), where));
    ArrayPtr array = omCreateStructMatrix(1, 1, fields);
    for (auto const& [name, value] : values) {
        std::string const field = bytesOf(name.ptr(), where);
        omSetField(*array, 0, field, anyArray(value.ptr(), where + "." + field));
    }
    return array;
}

ArrayPtr listArray(PyObject* object, std::string const& where) {
    py::list const members(py::reinterpret_borrow<py::object>(object));
    if (members.empty()) return omCreateNumericMatrix<double>(0, 0);
    if (py::isinstance<py::str>(members[0])) {
        ArrayPtr array = omCreateStringMatrix(1, members.size());
        for (std::size_t i = 0; i < members.size(); ++i)
            omSetString(*array, i, textOf(members[i].ptr(), where));
        return array;
    }
    auto const mixed = quorl::internal::makeInterned("orvane.mixin.Heterogeneous");
    ArrayPtr array = omCreateQuorlMatrix(mixed, 1, members.size());
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (!isElement(members[i].ptr())) failType(where, "elements or texts", members[i].ptr());
        omSetArrayElement(*array, i, *elementArray(members[i].ptr(), where));
    }
    omSetClassOfHeterogeneousArray(*array);
    return array;
}

/// \returns the host's class of a literal, null for any other object.
ArrayPtr literalArray(PyObject* object) {
    py::object const type = py::type::of(py::handle(object));
    if (!py::hasattr(type, "__host_name__") || !PyLong_Check(object)) return nullptr;
    auto const name = type.attr("__host_name__").cast<std::string>();
    ArrayPtr const number = omCreateNumericScalar<std::int32_t>(py::handle(object).cast<std::int32_t>());
    return omCreateBuiltinBasedArrayFromUnderlyingArray(quorl::internal::makeInterned(name), *number);
}

ArrayPtr anyArray(PyObject* object, std::string const& where) {
    if (object == Py_None) return omCreateNumericMatrix<double>(0, 0);
    if (PyBool_Check(object)) return omCreateNumericScalar<bool>(object == Py_True);
    if (PyLong_Check(object)) {
        ArrayPtr literal = literalArray(object);
        return literal != nullptr ? std::move(literal) : integerArray(object, where);
    }
    if (PyFloat_Check(object)) return omCreateNumericScalar<double>(PyFloat_AS_DOUBLE(object));
    if (PyBytes_Check(object)) return omCreateCharArray(bytesOf(object, where));
    if (PyDict_Check(object)) return structArray(object, where);
    if (isElement(object)) return elementArray(object, where);
    if (py::isinstance<Model>(object)) return modelArray(py::handle(object).cast<Model>());
    if (quorl::QuorlObject* const value = valueObject(object))
        return omCreateQuorlScalar(quorl::ObjectRef(value));
    if (PyUnicode_Check(object) || PyObject_HasAttrString(object, "__fspath__") != 0)
        return omCreateStringScalar(textOf(object, where));
    if (PyType_Check(object))
        if (ElementClass const* const entry = Types::get().find(reinterpret_cast<PyTypeObject*>(object)))
            return elementArray(owned(wrap(entry->table->metaClass().get())).ptr(), where);
    if (PySequence_Check(object) != 0) return listArray(object, where);
    return omCreateCharArray(py::str(py::handle(object)).cast<std::string>()); // such as a uuid.UUID
}

} // namespace

PyObject* arrayToPython(krelArray const& array) {
    if (omIsChar(array)) return elementAt(array, 0).release().ptr();
    std::size_t const count = omGetNumberOfElements(array);
    if (count == 0) return py::none().release().ptr();
    if (count == 1) return elementAt(array, 0).release().ptr();
    py::list list;
    for (std::size_t i = 0; i < count; ++i)
        list.append(elementAt(array, i));
    return list.release().ptr();
}

ArrayPtr arrayFromPython(PyObject* object, QuorlType const& type, std::string const& where) {
    if (type.getKind() == QuorlType::Kind::Char && PyUnicode_Check(object))
        return omCreateCharArray(bytesOf(object, where));
    return anyArray(object, where);
}

} // namespace zelkor::python
