#include "Methods.hpp"

#include "Arrays.hpp"
#include "Element.hpp"
#include "Property.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "ValueObject.hpp"
#include "Values.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/meta/MetaRegistry.hpp>
#include <brant/zero/mi/MetaMarshalerRegistry.hpp>
#include <quorl/Call.hpp>

#include <structmember.h>

#include <algorithm>
#include <new>
#include <optional>

namespace zelkor::python {

using brant::zero::Value;
using brant::zero::schema::OperationRow;
using quorl::QuorlClass;
namespace meta = brant::zero::meta;

namespace {

struct Method {
    std::vector<quorl::QuorlMethodInfo*> forms;
    quorl::QuorlClass* owner;
    OperationRow const* operation;
    char const* name;
    [[nodiscard]] bool isStatic() const { return forms.front()->isStatic(); }
};

struct MethodObject {
    PyObject_HEAD Method method;
    PyObject* doc;
};

PyTypeObject* type = nullptr;

Method& asMethod(PyObject* self) {
    return reinterpret_cast<MethodObject*>(self)->method;
}

/// How the method is called, for messages and help: `create_into_params(self, init=None, uuid=None)`.
std::string signatureText(Method const& method) {
    quorl::QuorlMethodSignature const& signature = *method.forms.front()->getSignature();
    std::string text;
    std::size_t const count = signature.getInputs().size();
    for (std::size_t i = 0; i < count; ++i) {
        bool const named = i < signature.getInputNames().size();
        std::string_view name = named ? std::string_view(signature.getInputNames()[i])
                                : i == 0 && !method.isStatic() ? "self"
                                                               : "value";
        if (name.starts_with("opt_")) name.remove_prefix(4);
        text += (i == 0 ? "" : ", ") + snakeCase(name);
        if (i >= count - signature.getOptionalCount()) text += "=None";
    }
    return std::string(method.name) + "(" + text + ")";
}

Value argumentOf(PyObject* object, char const* typeName, std::string const& where, Building& building) {
    meta::Type const type = meta::requireType(typeName);
    if (!meta::DataType::cast(type)) return valueFromPython(object, type, where, building);
    quorl::ArrayPtr const array = arrayFromPython(object, quorl::QuorlType::parse("any"), where);
    return brant::zero::mi::MetaMarshalerRegistry::getInstance().getPropertyMarshaler(type).fromKrelArray(
        array.get());
}

PyObject* callOperation(Method const& method, PyObject* arguments) {
    OperationRow const& row = *method.operation;
    PyObject* const object = PyTuple_GET_ITEM(arguments, 0);
    Body& body = bodyOf(asElement(object));
    std::vector<Value> values;
    Building building(asElement(object).model);
    for (std::uint16_t i = 0; i < row.argumentCount; ++i)
        values.push_back(argumentOf(PyTuple_GET_ITEM(arguments, i + 1), row.arguments[i].type,
                                    std::string(method.name) + ": " + row.arguments[i].name, building));
    brant::zero::meta::AbstractInvoker const& invoker = *row.invoker();
    if (row.upper <= 1) return valueToPython(invoker.invoke(body, values));
    std::optional<Value> found;
    {
        Unlocked const unlocked(asElement(object).model);
        found = invoker.invoke(body, values);
    }
    return valueToPython(*found);
}

bool isOperationOn(Method const& method, PyObject* arguments) {
    if (method.operation == nullptr || method.operation->invoker == nullptr) return false;
    if (PyTuple_GET_SIZE(arguments) != method.operation->argumentCount + 1) return false;
    PyObject* const self = PyTuple_GET_ITEM(arguments, 0);
    if (!isElement(self) || asElement(self).body == nullptr) return false;
    ElementClass const* const owner = Types::get().find(asElement(self).body->classTable());
    return owner != nullptr && owner->quorlClass->isSubclassOf(*method.owner);
}

PyObject* callHost(Method const& method, PyObject* arguments) {
    Arrays const inputs(arguments, method.forms);
    bool const isStatic = method.isStatic();
    if (!isStatic && inputs.span().empty())
        quorl::raise<quorl::messages::WrongArgumentCount>(std::string(method.name), "0",
                                                          signatureText(method));
    if (!isStatic && !omIsOfClass(*inputs.span()[0], method.owner->getName()))
        failType(method.name, pythonName(method.owner->getName().text()), PyTuple_GET_ITEM(arguments, 0));
    std::string const& hostName = method.forms.front()->getName();
    quorl::Outputs const outputs = isStatic ? quorl::callStatic(*method.owner, hostName, inputs.span())
                                            : quorl::callMethod(hostName, inputs.span());
    if (outputs.empty()) Py_RETURN_NONE;
    return arrayToPython(*outputs[0]);
}

/// \returns the values with the model's own names for the properties of what the method makes.
py::dict hostFields(Method const& method, py::dict const& values) {
    auto const& outputs = method.forms.front()->getSignature()->getOutputs();
    QuorlClass* const made = outputs.empty() ? nullptr : QuorlClass::getClass(outputs.front().getClassName());
    ElementClass const* const entry = made == nullptr ? nullptr : Types::get().find(*made);
    py::dict fields;
    for (auto const& [name, value] : values) {
        PropertyRow const* const row = entry != nullptr && entry->properties.contains(name)
                                           ? rowOf(py::object(entry->properties[name]).ptr())
                                           : nullptr;
        fields[row == nullptr ? py::reinterpret_borrow<py::object>(name) : py::str(row->name)] = value;
    }
    return fields;
}

/// \returns the arguments by position, null where none is given. Keyword arguments that are no parameters are
/// the init of what a `create_into_...` makes.
std::vector<py::object> placed(Method const& method, py::tuple const& given, py::dict const& keywords) {
    auto const& names = method.forms.front()->getSignature()->getInputNames();
    std::vector<py::object> places(std::max(names.size(), given.size()));
    for (std::size_t i = 0; i < given.size(); ++i)
        places[i] = given[i];
    py::dict rest;
    auto const place = [&](std::string const& word, py::object value) {
        auto const at = std::find_if(names.begin(), names.end(), [&](std::string const& known) {
            return known == word || snakeCase(known) == word || known == "opt_" + word;
        });
        if (at == names.end()) return false;
        py::object& slot = places[static_cast<std::size_t>(at - names.begin())];
        if (slot) fail("WrongArgument", std::string(method.name) + ": '" + word + "' is given twice");
        slot = std::move(value);
        return true;
    };
    for (auto const& [name, value] : keywords)
        if (!place(name.cast<std::string>(), py::reinterpret_borrow<py::object>(value))) rest[name] = value;
    if (rest.empty()) return places;
    if (std::find(names.begin(), names.end(), "opt_init") == names.end())
        fail("WrongArgument", std::string(method.name) + ": there is no parameter '" +
                                  (*rest.begin()).first.cast<std::string>() + "'; it is called as " +
                                  signatureText(method));
    place("init", rest);
    return places;
}

py::tuple argumentsOf(Method const& method, PyObject* arguments, PyObject* keywords) {
    auto const given = py::reinterpret_borrow<py::tuple>(arguments);
    py::dict const named = keywords == nullptr ? py::dict() : py::reinterpret_borrow<py::dict>(keywords);
    bool const plain = named.empty() && std::none_of(given.begin(), given.end(),
                                                     [](py::handle one) { return PyDict_Check(one.ptr()); });
    if (plain) return given;
    py::list all;
    for (py::object const& one : placed(method, given, named))
        if (one) all.append(py::isinstance<py::dict>(one) ? hostFields(method, one) : one);
    return py::tuple(all);
}

PyObject* call(PyObject* self, PyObject* arguments, PyObject* keywords) {
    Method const& method = asMethod(self);
    return guarded([&] {
        py::tuple const all = argumentsOf(method, arguments, keywords);
        return isOperationOn(method, all.ptr()) ? callOperation(method, all.ptr())
                                                : callHost(method, all.ptr());
    });
}

PyObject* bind(PyObject* self, PyObject* object, PyObject*) {
    if (object == nullptr || object == Py_None || asMethod(self).isStatic()) {
        Py_INCREF(self);
        return self;
    }
    return PyMethod_New(self, object);
}

void dealloc(PyObject* self) {
    asMethod(self).~Method();
    Py_XDECREF(reinterpret_cast<MethodObject*>(self)->doc);
    freeObject(self);
}

PyObject* represent(PyObject* self) {
    return guarded([&] {
        return py::str("<method " + pythonName(asMethod(self).owner->getName().text()) + "." +
                       signatureText(asMethod(self)) + ">")
            .release()
            .ptr();
    });
}

PyObject* getName(PyObject* self, void*) {
    return PyUnicode_FromString(asMethod(self).name);
}

PyGetSetDef accessors[] = {{"__name__", getName, nullptr, nullptr, nullptr},
                           {nullptr, nullptr, nullptr, nullptr, nullptr}};
PyMemberDef members[] = {{"__doc__", T_OBJECT, offsetof(MethodObject, doc), READONLY, nullptr},
                         {nullptr, 0, 0, 0, nullptr}};

} // namespace

void initMethods() {
    static PyType_Slot slots[] = {{Py_tp_dealloc, reinterpret_cast<void*>(dealloc)},
                                  {Py_tp_call, reinterpret_cast<void*>(call)},
                                  {Py_tp_descr_get, reinterpret_cast<void*>(bind)},
                                  {Py_tp_repr, reinterpret_cast<void*>(represent)},
                                  {Py_tp_getset, accessors},
                                  {Py_tp_members, members},
                                  {0, nullptr}};
    static PyType_Spec spec = {"zelkor.Method", sizeof(MethodObject), 0,
                               Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
    type = reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
}

PyObject* makeMethod(std::vector<quorl::QuorlMethodInfo*> forms, quorl::QuorlClass& owner,
                     OperationRow const* operation, char const* name) {
    auto* const self = PyObject_New(MethodObject, type);
    if (self == nullptr) throw py::error_already_set();
    new (&self->method) Method{std::move(forms), &owner, operation, name};
    self->doc = nullptr;
    py::object const holder = py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(self));
    self->doc = py::str(signatureText(self->method)).release().ptr();
    return py::object(holder).release().ptr();
}

Arrays::Arrays(PyObject* arguments, std::vector<quorl::QuorlMethodInfo*> const& forms) {
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(arguments); ++i) {
        static quorl::QuorlType const any = quorl::QuorlType::parse("any");
        auto const index = static_cast<std::size_t>(i);
        bool const typed = forms.size() == 1 && index < forms.front()->getSignature()->getInputs().size();
        quorl::QuorlType const& wanted = typed ? forms.front()->getSignature()->getInputs()[index] : any;
        arrays_.push_back(
            arrayFromPython(PyTuple_GET_ITEM(arguments, i), wanted, "argument " + std::to_string(i + 1)));
        inputs_.push_back(arrays_.back().get());
    }
}

quorl::QuorlClass* quorlClassOf(PyTypeObject const* wanted) {
    if (ElementClass const* const entry = Types::get().find(wanted)) return entry->quorlClass;
    return Types::get().classOf(wanted);
}

} // namespace zelkor::python
