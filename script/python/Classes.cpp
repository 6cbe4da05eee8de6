#include "Classes.hpp"

#include "Element.hpp"
#include "Methods.hpp"
#include "Property.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "ValueObject.hpp"

#include <brant/zero/mi/WrapperInfo.hpp>
#include <quorl/QuorlPackage.hpp>
#include <zelkor/ast/binding.hpp>

#include <deque>
#include <map>

namespace zelkor::python {

using brant::zero::mi::ElementProperty;
using brant::zero::mi::ElementWrapperInfo;
using quorl::QuorlClass;

namespace {

/// Python keeps pointers to these; they live as long as the process.
char const* keep(std::string text) {
    static auto* const kept = new std::deque<std::string>;
    return kept->emplace_back(std::move(text)).c_str();
}

ClassTable const* tableOf(QuorlClass const& quorlClass) {
    if (auto const* const info = dynamic_cast<ElementWrapperInfo const*>(&quorlClass.getInfo()))
        return &info->getTable();
    return quorlClass.getName().text() == brant::zero::modelElementTable.scriptName
               ? &brant::zero::modelElementTable
               : nullptr;
}

brant::zero::schema::OperationRow const* operationOf(ClassTable const* table, std::string const& name) {
    for (ClassTable const* at = table; at != nullptr; at = at->base)
        for (std::uint16_t i = 0; i < at->operationCount; ++i)
            if (name == at->operations[i].name) return &at->operations[i];
    return nullptr;
}

class Maker {
  public:
    explicit Maker(py::dict const& docs) : docs_(docs) {
        // The host's own handles on these have no use beside the classes that Python has for them.
        shown_ = {{"brant.zero.Model", "Model"}, {"brant.zero.Transaction", "Transaction"}};
    }

    void package(std::string const& name) {
        quorl::QuorlPackage* const found = quorl::QuorlPackage::getPackage(name);
        if (found == nullptr) return;
        for (quorl::InternedName const className : found->getClassNames())
            (void)classOf(*QuorlClass::getClass(className));
        for (quorl::QuorlPackage* const inner : found->getSubpackages())
            package(inner->getName());
    }

    [[nodiscard]] py::dict const& packages() const noexcept { return packages_; }

    /// From here on nobody derives from the classes: an element's class is the model's affair.
    void seal() const {
        for (PyTypeObject* const type : elementTypes_) {
            type->tp_flags &= ~Py_TPFLAGS_BASETYPE;
            PyType_Modified(type);
        }
    }

  private:
    py::object classOf(QuorlClass& quorlClass) {
        std::string const& hostName = quorlClass.getName().text();
        auto const made = made_.find(hostName);
        if (made != made_.end()) return made->second;
        py::object const type = make(quorlClass);
        made_.emplace(hostName, type);
        std::string const name = pythonName(hostName);
        std::size_t const dot = name.rfind('.');
        py::str const package(name.substr(0, dot));
        if (!packages_.contains(package)) packages_[package] = py::dict();
        packages_[package][name.substr(dot + 1).c_str()] = type;
        return type;
    }

    py::object make(QuorlClass& quorlClass) {
        std::string const& hostName = quorlClass.getName().text();
        if (auto const own = shown_.find(hostName); own != shown_.end())
            return py::module_::import("zelkor._core").attr(own->second);
        if (quorlClass.isEnumeration()) return makeEnum(quorlClass);
        ClassTable const* const table = tableOf(quorlClass);
        return table == nullptr ? makeValue(quorlClass) : makeElement(quorlClass, *table);
    }

    py::object makeEnum(QuorlClass& quorlClass) {
        std::string const name = pythonName(quorlClass.getName().text());
        std::size_t const dot = name.rfind('.');
        py::list literals;
        for (auto const& literal : quorlClass.getEnumValues())
            literals.append(py::make_tuple(identifier(literal->getName()), literal->getNumericValue()));
        py::object const type = py::module_::import("enum").attr("IntEnum")(
            name.substr(dot + 1), literals, py::arg("module") = name.substr(0, dot));
        type.attr("__doc__") = doc(name);
        type.attr("__host_name__") = quorlClass.getName().text();
        EnumClass entry{type, {}};
        for (auto const& literal : quorlClass.getEnumValues())
            entry.members.emplace_back(literal->getNumericValue(),
                                       type.attr(identifier(literal->getName()).c_str()));
        Types::get().addEnum(quorlClass.getName().text(), std::move(entry));
        return type;
    }

    py::object makeElement(QuorlClass& quorlClass, ClassTable const& table) {
        std::string const name = pythonName(quorlClass.getName().text());
        std::string const text = doc(name).cast<std::string>();
        ElementClass entry{nullptr, &table, &quorlClass, py::dict(), py::list()};
        if (quorlClass.getSuperclasses().empty()) {
            entry.type = makeElementRoot(keep(name), text.c_str());
        } else {
            py::object const base = classOf(*quorlClass.getSuperclasses().front());
            auto* const baseType = reinterpret_cast<PyTypeObject*>(base.ptr());
            entry.type = makeElementType(keep(name), baseType, text.c_str());
            ElementClass const& inherited = *Types::get().find(baseType);
            entry.properties = inherited.properties.attr("copy")();
            entry.names = inherited.names.attr("copy")();
        }
        elementTypes_.push_back(entry.type);
        py::object const type = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(entry.type));
        for (auto const& property : quorlClass.getProperties()) {
            auto const* const own = dynamic_cast<ElementProperty const*>(property.get());
            py::object const descriptor =
                addProperty(type, name, *property, own == nullptr ? nullptr : &own->getRow());
            std::string const shown = snakeCase(property->getName());
            entry.properties[shown.c_str()] = descriptor;
            entry.properties[identifier(property->getName()).c_str()] = descriptor;
            entry.names.append(shown);
        }
        addMethods(type, quorlClass, &table);
        Types::get().addElementClass(std::move(entry));
        return type;
    }

    py::object makeValue(QuorlClass& quorlClass) {
        std::string const name = pythonName(quorlClass.getName().text());
        std::string const text = doc(name).cast<std::string>();
        py::object const type = owned(makeValueType(quorlClass, keep(name), text.c_str()));
        for (auto const& property : quorlClass.getProperties())
            addProperty(type, name, *property, nullptr);
        addMethods(type, quorlClass, nullptr);
        return type;
    }

    py::object addProperty(py::object const& type, std::string const& owner, quorl::QuorlPropInfo const& info,
                           PropertyRow const* row) {
        char const* const shown = keep(snakeCase(info.getName()));
        py::object const descriptor =
            owned(makeProperty(info, row, shown, doc(owner + "." + info.getName()).ptr()));
        add(type, info.getName(), shown, descriptor);
        return descriptor;
    }

    void addMethods(py::object const& type, QuorlClass& quorlClass, ClassTable const* table) {
        std::map<std::string, std::vector<quorl::QuorlMethodInfo*>> byName;
        for (auto const& method : quorlClass.getMethods())
            if (!method->isConstructor()) byName[method->getName()].push_back(method.get());
        for (auto const& [name, forms] : byName) {
            char const* const shown = keep(snakeCase(name));
            auto const* const operation = operationOf(table, name);
            add(type, name, shown, owned(makeMethod(forms, quorlClass, operation, shown)));
        }
    }

    /// Adds a member under both names. What every Python object of the kind has already stays.
    static void add(py::object const& type, std::string const& own, std::string const& shown,
                    py::object const& member) {
        py::object const members = type.attr("__dict__");
        for (std::string const& name : {shown, identifier(own)})
            if (!members.contains(shown.c_str()) || members[shown.c_str()].ptr() == member.ptr())
                type.attr(name.c_str()) = member;
    }

    [[nodiscard]] py::object doc(std::string const& name) const {
        return docs_.contains(name.c_str()) ? py::object(docs_[name.c_str()]) : py::str("");
    }

    py::dict docs_;
    py::dict packages_;
    std::map<std::string, char const*> shown_;
    std::map<std::string, py::object> made_;
    std::vector<PyTypeObject*> elementTypes_;
};

} // namespace

py::dict makeClasses(py::dict const& docs) {
    zelkor_ast_initialize();
    Maker maker(docs);
    for (char const* const root : {"brant.zero", "internal.zelkor.ast"})
        maker.package(root);
    maker.seal();
    return maker.packages();
}

} // namespace zelkor::python
