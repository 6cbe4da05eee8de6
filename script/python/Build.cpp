#include "Build.hpp"

#include "Property.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "Values.hpp"

#include <brant/zero/Exceptions.hpp>
#include <quorl/Errors.hpp>

namespace zelkor::python {

namespace {

std::string nameOf(PyObject* type) {
    return reinterpret_cast<PyTypeObject*>(type)->tp_name;
}

/// Refuses names that are no property, before anything is made.
void requireProperties(ElementClass const& entry, py::dict const& values) {
    for (auto const& [name, value] : values) {
        auto const text = name.cast<std::string>();
        if (text == "uuid" || entry.properties.contains(name)) continue;
        fail("NoSuchAttribute", std::string(entry.type->tp_name) + " has no property '" + text + "'" +
                                    suggestion(text, entry.names));
    }
}

/// \returns the values of a pending object. Lists become tuples: nobody changes them behind its back.
py::dict keep(py::dict const& values) {
    py::dict kept;
    for (auto const& [name, value] : values)
        kept[name] = PyList_Check(value.ptr())
                         ? py::object(py::tuple(py::reinterpret_borrow<py::list>(value)))
                         : py::reinterpret_borrow<py::object>(value);
    return kept;
}

} // namespace

PyObject* buildElement(PyTypeObject* type, PyObject* arguments, PyObject* keywords) {
    ElementClass* const entry = Types::get().find(type);
    std::string const name = type->tp_name;
    if (entry == nullptr || entry->table->isAbstract || entry->table->construct == nullptr)
        quorl::raise<quorl::messages::CannotInstantiate>(name, "the class is abstract");
    Py_ssize_t const given = PyTuple_GET_SIZE(arguments);
    if (given > 1)
        quorl::raise<quorl::messages::WrongArgumentCount>(name, std::to_string(given),
                                                          "a model and keyword arguments");
    py::dict const values = keywords == nullptr ? py::dict() : py::reinterpret_borrow<py::dict>(keywords);
    requireProperties(*entry, values);
    Model const model = given == 0 ? Model() : modelOf(PyTuple_GET_ITEM(arguments, 0), name + ": the model");
    auto* const self = PyObject_New(ElementObject, type);
    if (self == nullptr) throw py::error_already_set();
    self->body = nullptr;
    self->pending = nullptr;
    new (&self->model) Model();
    py::object const holder = py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(self));
    self->pending = keep(values).release().ptr();
    if (given == 1) {
        Building building(model);
        building.materialise(holder.ptr());
        building.commit();
    }
    return py::object(holder).release().ptr();
}

Building::~Building() {
    if (made_.empty()) return;
    level_.reset(); // takes the elements back
    for (Made& made : made_) {
        ElementObject& object = asElement(made.object.ptr());
        if (object.body != nullptr) object.body->removeRef();
        object.body = nullptr;
        object.model = Model();
        object.pending = made.values;
    }
}

void Building::open() {
    if (level_) return;
    awaitModel(model_.get());
    if (!model_) brant::zero::throwDeadHandle(brant::zero::HandleState::ModelGone);
    level_.emplace(*model_.get());
}

void Building::commit() {
    // What an observer of the commit throws comes after the fact: the elements stay.
    std::vector<Made> const made = std::move(made_);
    made_.clear();
    for (Made const& one : made)
        Py_XDECREF(one.values);
    if (!level_) return;
    level_->commit();
}

Body& Building::materialise(PyObject* object) {
    if (asElement(object).body == nullptr) make(object);
    return bodyOf(asElement(object));
}

void Building::make(PyObject* object) {
    ElementObject& self = asElement(object);
    ElementClass const& entry = *Types::get().find(Py_TYPE(object));
    if (Py_EnterRecursiveCall(" while elements were built") != 0) throw py::error_already_set();
    struct Leave {
        ~Leave() { Py_LeaveRecursiveCall(); }
    } const leave;
    open();
    auto const values = py::reinterpret_borrow<py::dict>(self.pending);
    brant::zero::uuid identity{};
    if (values.contains("uuid"))
        identity = uuidOf(py::object(values["uuid"]).ptr(),
                          nameOf(reinterpret_cast<PyObject*>(entry.type)) + ".uuid");
    ModelElement const element = Core::create(*entry.table, model_, identity);
    made_.push_back({py::reinterpret_borrow<py::object>(object), self.pending});
    self.pending = nullptr;
    self.body = element.get();
    self.body->addRef();
    self.model = model_;
    for (auto const& [name, value] : values)
        if (!py::str("uuid").equal(name))
            setProperty(object, py::object(entry.properties[name]).ptr(), value.ptr(), *this);
}

} // namespace zelkor::python
