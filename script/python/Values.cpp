#include "Values.hpp"

#include "Lists.hpp"
#include "Texts.hpp"
#include "Types.hpp"

#include <brant/zero/Collection.hpp>
#include <brant/zero/Exceptions.hpp>
#include <brant/zero/Primitive.hpp>
#include <brant/zero/Text.hpp>
#include <brant/zero/meta/MetaRegistry.hpp>
#include <brant/zero/meta/Names.hpp>

#include <cmath>
#include <limits>

namespace zelkor::python {

using brant::zero::Value;
using brant::zero::ValueFlags;
using brant::zero::schema::PropertyKind;
using brant::zero::schema::ValueKind;
namespace meta = brant::zero::meta;

namespace {

std::int64_t signedOf(PyObject* object, std::string const& where, std::int64_t low, std::int64_t high) {
    if (!PyLong_Check(object) || PyBool_Check(object)) failType(where, "int", object);
    int overflow = 0;
    std::int64_t const number = PyLong_AsLongLongAndOverflow(object, &overflow);
    if (overflow != 0 || number < low || number > high)
        fail("InvalidValue",
             where + ": the number must lie between " + std::to_string(low) + " and " + std::to_string(high));
    return number;
}

std::uint64_t unsignedOf(PyObject* object, std::string const& where, std::uint64_t high) {
    if (!PyLong_Check(object) || PyBool_Check(object)) failType(where, "int", object);
    std::uint64_t const number = PyLong_AsUnsignedLongLong(object);
    bool const bad = PyErr_Occurred() != nullptr;
    PyErr_Clear();
    if (bad || number > high)
        fail("InvalidValue", where + ": the number must lie between 0 and " + std::to_string(high));
    return number;
}

double realOf(PyObject* object, std::string const& where) {
    if (!PyFloat_Check(object) && (!PyLong_Check(object) || PyBool_Check(object)))
        failType(where, "float", object);
    double const number = PyFloat_AsDouble(object);
    if (number == -1.0 && PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        fail("InvalidValue", where + ": the number is too large");
    }
    return number;
}

bool truthOf(PyObject* object, std::string const& where) {
    if (!PyBool_Check(object)) failType(where, "bool", object);
    return object == Py_True;
}

PyObject* readAttribute(Body const& body, PropertyRow const& row) {
    switch (row.valueKind) {
    case ValueKind::Boolean:
        return PyBool_FromLong(Core::field<bool>(body, row));
    case ValueKind::Integer:
        return checked(PyLong_FromLong(Core::field<std::int32_t>(body, row)));
    case ValueKind::UnlimitedNatural:
        return checked(PyLong_FromUnsignedLong(Core::field<std::uint32_t>(body, row)));
    case ValueKind::Integer64:
        return checked(PyLong_FromLong(Core::field<std::int64_t>(body, row)));
    case ValueKind::UInteger64:
        return checked(PyLong_FromUnsignedLong(Core::field<std::uint64_t>(body, row)));
    case ValueKind::Real:
        return checked(PyFloat_FromDouble(Core::field<double>(body, row)));
    case ValueKind::String:
        return toPython(Core::field<std::u16string>(body, row));
    case ValueKind::StdString:
        return toPython(Core::field<std::string>(body, row));
    default:
        return Types::get().enumOf(*row.enumeration).member(Core::field<std::int32_t>(body, row));
    }
}

void writeAttribute(Body& body, PropertyRow const& row, PyObject* value) {
    std::string const where = placeOf(row);
    switch (row.valueKind) {
    case ValueKind::Boolean:
        return Core::setBoolean(body, row, truthOf(value, where));
    case ValueKind::Integer:
        return Core::setWord(
            body, row,
            static_cast<std::uint32_t>(signedOf(value, where, std::numeric_limits<std::int32_t>::min(),
                                                std::numeric_limits<std::int32_t>::max())));
    case ValueKind::UnlimitedNatural:
        return Core::setWord(
            body, row,
            static_cast<std::uint32_t>(unsignedOf(value, where, std::numeric_limits<std::uint32_t>::max())));
    case ValueKind::Integer64:
        return Core::setLong(
            body, row,
            static_cast<std::uint64_t>(signedOf(value, where, std::numeric_limits<std::int64_t>::min(),
                                                std::numeric_limits<std::int64_t>::max())));
    case ValueKind::UInteger64:
        return Core::setLong(body, row, unsignedOf(value, where, std::numeric_limits<std::uint64_t>::max()));
    case ValueKind::Real:
        return Core::setReal(body, row, realOf(value, where));
    case ValueKind::String:
        if (row.customText != nullptr) return row.customText(body, textOf(value, where));
        return Core::setString(body, row, textOf(value, where));
    case ValueKind::StdString:
        return Core::setStdString(body, row, bytesOf(value, where));
    default:
        return Core::setWord(
            body, row, static_cast<std::uint32_t>(Types::get().enumOf(*row.enumeration).value(value, where)));
    }
}

/// \returns what an iterable has in it; a text is none here, although Python could walk it.
py::list membersOf(PyObject* value, std::string const& where) {
    if (PyUnicode_Check(value) || PyBytes_Check(value)) failType(where, "a list", value);
    PyObject* const list = PySequence_List(value);
    if (list == nullptr && PyErr_ExceptionMatches(PyExc_TypeError) != 0) {
        PyErr_Clear();
        failType(where, "a list", value);
    }
    return owned(list);
}

void replaceContent(Body& body, PropertyRow const& row, PyObject* value, Building& building) {
    std::string const where = placeOf(row);
    py::list const members = membersOf(value, where);
    building.open();
    auto& collection = Core::live(body, Core::collection(body, row));
    if (auto* const elements = collection.asReferences()) {
        std::vector<ModelElement> targets;
        for (py::handle const member : members)
            targets.emplace_back(&memberFromPython(member.ptr(), row, building));
        elements->genericClear();
        for (ModelElement const& target : targets)
            elements->genericAdd(target);
        return;
    }
    auto& values = static_cast<brant::zero::AbstractPrimitiveCollection&>(collection);
    meta::Type const type = Core::propertyOf(&row).getType();
    std::vector<Value> fresh;
    for (py::handle const member : members)
        fresh.push_back(valueFromPython(member.ptr(), type, where, building));
    values.clear();
    for (Value const& member : fresh)
        values.genericAdd(member);
}

PyObject* primitiveToPython(Value const& value, std::u16string const& name) {
    if (name == u"Boolean") return PyBool_FromLong(value.getValue<bool>());
    if (name == u"Integer") return checked(PyLong_FromLong(value.getValue<int>()));
    if (name == u"UnlimitedNatural") return checked(PyLong_FromUnsignedLong(value.getValue<unsigned int>()));
    if (name == u"Integer64") return checked(PyLong_FromLong(value.getValue<long>()));
    if (name == u"UInteger64") return checked(PyLong_FromUnsignedLong(value.getValue<unsigned long>()));
    if (name == u"Real") return checked(PyFloat_FromDouble(value.getValue<double>()));
    if (name == u"String") return toPython(value.getValue<std::u16string>());
    return toPython(value.getValue<std::string>());
}

Value primitiveFromPython(PyObject* object, meta::Type const& type, std::string const& where) {
    std::u16string const name = type.getName();
    if (name == u"Boolean") return Value::own<bool>(type, ValueFlags::One, truthOf(object, where));
    if (name == u"Integer")
        return Value::own<int>(type, ValueFlags::One,
                               static_cast<int>(signedOf(object, where, std::numeric_limits<int>::min(),
                                                         std::numeric_limits<int>::max())));
    if (name == u"UnlimitedNatural")
        return Value::own<unsigned int>(
            type, ValueFlags::One,
            static_cast<unsigned int>(unsignedOf(object, where, std::numeric_limits<unsigned int>::max())));
    if (name == u"Integer64")
        return Value::own<long>(
            type, ValueFlags::One,
            signedOf(object, where, std::numeric_limits<long>::min(), std::numeric_limits<long>::max()));
    if (name == u"UInteger64")
        return Value::own<unsigned long>(
            type, ValueFlags::One, unsignedOf(object, where, std::numeric_limits<unsigned long>::max()));
    if (name == u"Real") return Value::own<double>(type, ValueFlags::One, realOf(object, where));
    if (name == u"String") return Value::own<std::u16string>(type, ValueFlags::One, textOf(object, where));
    return Value::own<std::string>(type, ValueFlags::One, bytesOf(object, where));
}

EnumClass const& enumOf(meta::Enum const& type) {
    auto const* const table = type.get()->description<brant::zero::schema::EnumTable>();
    return Types::get().enumOf(*table);
}

/// A Python class stands for the meta object that describes it.
Body* describedClass(PyObject* object, meta::Type const& type) {
    if (!PyType_Check(object) || brant::zero::meta::qualifiedNameUtf8(type) != "brant.zero.meta.Class")
        return nullptr;
    ElementClass const* const entry = Types::get().find(reinterpret_cast<PyTypeObject*>(object));
    return entry == nullptr ? nullptr : entry->table->metaClass().get();
}

Body& elementOfClass(PyObject* object, ClassTable const& table, std::string const& where,
                     Building& building) {
    if (!isElement(object)) failType(where, pythonName(table.scriptName), object);
    Body& body = building.materialise(object);
    if (!body.classTable().conformsTo(table)) failType(where, pythonName(table.scriptName), object);
    return body;
}

PyObject* one(Value const& value) {
    meta::Type const type = value.getType();
    if (auto const primitive = meta::PrimitiveType::cast(type))
        return primitiveToPython(value, primitive.getName());
    if (auto const enumeration = meta::Enum::cast(type)) {
        auto const* const table = enumeration.get()->description<brant::zero::schema::EnumTable>();
        return enumOf(enumeration).member(static_cast<std::int64_t>(value.getEnumerationWord(*table)));
    }
    if (meta::Class::cast(type)) return wrap(value.getValue<ModelElement>().get());
    fail("Failure", "a value of type " + meta::qualifiedNameUtf8(type) + " has no form in Python");
}

template <class Members>
PyObject* listOf(Members const& members) {
    py::list list;
    for (auto const& member : members)
        if constexpr (std::same_as<std::decay_t<decltype(member)>, ModelElement>)
            list.append(owned(wrap(member.get())));
        else
            list.append(owned(one(member)));
    return list.release().ptr();
}

} // namespace

std::string placeOf(PropertyRow const& row) {
    return (row.owner == nullptr ? std::string() : std::string(row.owner->shortName) + ".") + row.name;
}

void failReadOnly(PropertyRow const& row) {
    brant::zero::reportException(
        brant0::messages::CannotSetReadOnlyProperty(brant::zero::toUtf16(placeOf(row)).value()));
}

brant::zero::uuid uuidOf(PyObject* object, std::string const& where) {
    std::string const text = py::str(py::handle(object)).cast<std::string>();
    brant::zero::uuid identity{};
    if (!brant::zero::parseUuid(text, identity))
        fail("InvalidValue",
             where + ": '" + text + "' is no identity; give a uuid.UUID or its canonical text");
    return identity;
}

PyObject* readProperty(PyObject* object, PropertyRow const& row) {
    ElementObject& self = asElement(object);
    Body& body = bodyOf(self);
    switch (row.kind) {
    case PropertyKind::Attribute:
        return readAttribute(body, row);
    case PropertyKind::Reference:
        return wrap(Core::readReference(body, row), self.model);
    case PropertyKind::ContainerEnd:
        return wrap(Core::readContainerEnd(body, row), self.model);
    case PropertyKind::Derived: {
        Value const value = ModelElement(&body).getPropertyValue(Core::propertyOf(&row));
        return valueToPython(value);
    }
    default:
        return makeList(object, row);
    }
}

void writeProperty(PyObject* object, PropertyRow const& row, PyObject* value, Building& building) {
    Body& body = bodyOf(asElement(object));
    switch (row.kind) {
    case PropertyKind::Attribute:
        return writeAttribute(body, row, value);
    case PropertyKind::Reference:
    case PropertyKind::ContainerEnd:
        return Core::setReference(body, row,
                                  value == Py_None ? nullptr : &memberFromPython(value, row, building));
    case PropertyKind::View:
    case PropertyKind::Derived:
        failReadOnly(row);
    default:
        return replaceContent(body, row, value, building);
    }
}

Body& memberFromPython(PyObject* object, PropertyRow const& row, Building& building) {
    return elementOfClass(object, *row.target, placeOf(row), building);
}

PyObject* valueToPython(Value const& value) {
    if (auto* const collection = value.collection()) {
        if (auto* const elements = collection->asReferences()) return listOf(elements->getAllValues());
        return listOf(static_cast<brant::zero::AbstractPrimitiveCollection&>(*collection).getAllValues());
    }
    if (value.flags() == ValueFlags::Absent) Py_RETURN_NONE;
    return value.flags() == ValueFlags::One ? one(value) : listOf(value.extract());
}

Value valueFromPython(PyObject* object, meta::Type const& type, std::string const& where,
                      Building& building) {
    if (meta::PrimitiveType::cast(type)) return primitiveFromPython(object, type, where);
    if (auto const enumeration = meta::Enum::cast(type))
        return Value(type, static_cast<unsigned long>(enumOf(enumeration).value(object, where)),
                     ValueFlags::One);
    auto const wanted = meta::Class::cast(type);
    if (!wanted) failType(where, meta::qualifiedNameUtf8(type), object);
    if (object == Py_None) return Value::own<ModelElement>(type, ValueFlags::One, ModelElement());
    if (Body* const described = describedClass(object, type))
        return Value::own<ModelElement>(described->getMetaClass(), ValueFlags::One, ModelElement(described));
    Body& body = elementOfClass(object, *meta::tableOf(wanted), where, building);
    return Value::own<ModelElement>(body.getMetaClass(), ValueFlags::One, ModelElement(&body));
}

} // namespace zelkor::python
