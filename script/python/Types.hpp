/// \file
/// Which Python class stands for which class of the host and of the model.
#pragma once

#include "Python.hpp"

#include <brant/zero/Schema.hpp>
#include <quorl/QuorlClass.hpp>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace zelkor::python {

/// The Python side of an enumeration.
struct EnumClass {
    py::object type;                                          ///< an IntEnum
    std::vector<std::pair<std::int64_t, py::object>> members; ///< by value

    /// \returns the literal of that number, or the plain number when none has it.
    [[nodiscard]] PyObject* member(std::int64_t value) const;
    /// \returns the number that a literal, its name or a number stands for.
    [[nodiscard]] std::int64_t value(PyObject* object, std::string const& where) const;
};

/// The Python side of a class of elements.
struct ElementClass {
    PyTypeObject* type;
    brant::zero::schema::ClassTable const* table;
    quorl::QuorlClass* quorlClass;
    py::dict properties; ///< descriptors of the whole chain by both of their names
    py::list names;      ///< the first of the two, for messages
};

/// All classes that Python shows. Filled once, when the module is imported, and never emptied: objects may be
/// released while the process ends.
class Types {
  public:
    static Types& get();

    ElementClass& addElementClass(ElementClass entry);
    void addEnum(std::string const& hostName, EnumClass entry) { enums_[hostName] = std::move(entry); }
    void addOther(quorl::QuorlClass& quorlClass, PyObject* type) { others_[&quorlClass] = type; }

    /// \returns the type of that class, or of the nearest superclass that has one. Constant time.
    [[nodiscard]] PyTypeObject* typeOf(brant::zero::schema::ClassTable const& table) const;
    /// \returns the class behind a type of elements, null for any other type.
    [[nodiscard]] ElementClass* find(PyTypeObject const* type) const;
    [[nodiscard]] ElementClass* find(brant::zero::schema::ClassTable const& table) const;
    [[nodiscard]] ElementClass* find(quorl::QuorlClass const& quorlClass) const;
    [[nodiscard]] EnumClass const& enumOf(brant::zero::schema::EnumTable const& table) const;
    [[nodiscard]] EnumClass const* findEnum(std::string const& hostName) const;
    /// \returns the type of a class that is no class of elements, null when there is none.
    [[nodiscard]] PyObject* other(quorl::QuorlClass& quorlClass) const;
    /// \returns the class behind such a type, null for any other type.
    [[nodiscard]] quorl::QuorlClass* classOf(PyTypeObject const* type) const;

  private:
    std::unordered_map<PyTypeObject const*, std::unique_ptr<ElementClass>> byType_;
    std::unordered_map<brant::zero::schema::ClassTable const*, ElementClass*> byTable_;
    std::unordered_map<std::string, EnumClass> enums_;
    mutable std::unordered_map<brant::zero::schema::EnumTable const*, EnumClass const*> byEnumTable_;
    std::unordered_map<quorl::QuorlClass*, PyObject*> others_;
    mutable brant::zero::schema::ClassTable const* lastTable_ = nullptr;
    mutable PyTypeObject* lastType_ = nullptr;
};

} // namespace zelkor::python
