#include "Types.hpp"

#include "Texts.hpp"

#include <algorithm>

namespace zelkor::python {

using brant::zero::schema::ClassTable;

PyObject* EnumClass::member(std::int64_t value) const {
    for (auto const& [number, literal] : members)
        if (number == value) return py::object(literal).release().ptr();
    return checked(PyLong_FromLongLong(value));
}

std::int64_t EnumClass::value(PyObject* object, std::string const& where) const {
    if (PyUnicode_Check(object)) {
        std::string const name = bytesOf(object, where);
        py::list names;
        for (auto const& [number, literal] : members) {
            auto const known = literal.attr("name").cast<std::string>();
            if (known == name || known == name + "_") return number;
            names.append(known);
        }
        fail("InvalidValue", where + ": there is no literal '" + name + "' in " +
                                 type.attr("__name__").cast<std::string>() + suggestion(name, names));
    }
    if (!PyLong_Check(object) || PyBool_Check(object))
        failType(where, type.attr("__name__").cast<std::string>(), object);
    int overflow = 0;
    std::int64_t const number = PyLong_AsLongLongAndOverflow(object, &overflow);
    bool const known = overflow == 0 && std::any_of(members.begin(), members.end(),
                                                    [&](auto const& entry) { return entry.first == number; });
    if (!known)
        fail("InvalidValue", where + ": " + py::repr(object).cast<std::string>() +
                                 " is the number of no literal of " +
                                 type.attr("__name__").cast<std::string>());
    return number;
}

Types& Types::get() {
    static auto* const instance = new Types;
    return *instance;
}

ElementClass& Types::addElementClass(ElementClass entry) {
    auto& place = byType_[entry.type];
    place = std::make_unique<ElementClass>(std::move(entry));
    byTable_[place->table] = place.get();
    return *place;
}

PyTypeObject* Types::typeOf(ClassTable const& table) const {
    if (&table == lastTable_) return lastType_;
    for (ClassTable const* at = &table; at != nullptr; at = at->base)
        if (ElementClass const* const entry = find(*at)) {
            lastTable_ = &table;
            return lastType_ = entry->type;
        }
    return find(brant::zero::modelElementTable)->type;
}

ElementClass* Types::find(PyTypeObject const* type) const {
    auto const found = byType_.find(type);
    return found == byType_.end() ? nullptr : found->second.get();
}

ElementClass* Types::find(ClassTable const& table) const {
    auto const found = byTable_.find(&table);
    return found == byTable_.end() ? nullptr : found->second;
}

ElementClass* Types::find(quorl::QuorlClass const& quorlClass) const {
    for (auto const& [type, entry] : byType_)
        if (entry->quorlClass == &quorlClass) return entry.get();
    return nullptr;
}

EnumClass const& Types::enumOf(brant::zero::schema::EnumTable const& table) const {
    EnumClass const*& found = byEnumTable_[&table];
    if (found == nullptr) found = findEnum(table.scriptName);
    if (found == nullptr)
        fail("Failure", std::string("the host does not know the enumeration ") + table.scriptName);
    return *found;
}

EnumClass const* Types::findEnum(std::string const& hostName) const {
    auto const found = enums_.find(hostName);
    return found == enums_.end() ? nullptr : &found->second;
}

quorl::QuorlClass* Types::classOf(PyTypeObject const* type) const {
    for (auto const& [quorlClass, known] : others_)
        if (known == reinterpret_cast<PyObject const*>(type)) return quorlClass;
    return nullptr;
}

PyObject* Types::other(quorl::QuorlClass& quorlClass) const {
    auto const found = others_.find(&quorlClass);
    return found == others_.end() ? nullptr : found->second;
}

} // namespace zelkor::python
