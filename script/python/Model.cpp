#include "Model.hpp"

#include "Lists.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "Values.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/MetaObject.hpp>
#include <zelkor/ast/Ast.hpp>

#include <optional>

namespace zelkor::python {

namespace {

using brant::zero::CommitNotice;
using brant::zero::ElementChange;
namespace meta = brant::zero::meta;

/// \returns the model after a check that nobody else works on it.
Model const& ready(Model const& model) {
    awaitModel(model.get());
    return model;
}

/// A transaction level that `with` opens. Leaving it by an exception takes back what was done in it.
class Level {
  public:
    explicit Level(Model model) : model_(std::move(model)) {}

    Level& enter() {
        if (transaction_ || ended_)
            fail("NotAllowed", "a transaction is entered once; ask the model for another one");
        transaction_.emplace(ready(model_).beginTransaction());
        return *this;
    }
    void commit() {
        requireOpen().commit();
        close();
    }
    void rollback() {
        requireOpen().rollback();
        close();
    }
    void exit(py::handle type, py::handle, py::handle) {
        if (!transaction_) return; // ended by hand
        if (type.is_none())
            commit();
        else
            rollback();
    }
    [[nodiscard]] bool isOpen() const noexcept { return transaction_.has_value(); }

  private:
    brant::zero::Transaction& requireOpen() {
        if (!transaction_) fail("NotAllowed", "the transaction is not open");
        (void)ready(model_);
        return *transaction_;
    }
    void close() {
        ended_ = true;
        transaction_.reset();
    }

    Model model_;
    std::optional<brant::zero::Transaction> transaction_;
    bool ended_ = false;
};

/// One element in a notice.
class Change {
  public:
    Change(ElementChange change, Model model, std::shared_ptr<bool> open)
        : change_(std::move(change)), model_(std::move(model)), open_(std::move(open)) {}

    [[nodiscard]] py::object element() const { return owned(wrap(change_.element().get(), model_)); }
    [[nodiscard]] py::object uuid() const {
        return py::module_::import("uuid").attr("UUID")(brant::zero::toString(change_.uuid()));
    }
    [[nodiscard]] py::object type() const {
        ClassTable const* const table = change_.getMetaClass().get()->description<ClassTable>();
        return py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(Types::get().typeOf(*table)));
    }
    [[nodiscard]] py::list properties() const {
        py::list names;
        for (meta::Property const& property : change_.properties())
            names.append(snakeCase(Core::rowOf(property).name));
        return names;
    }
    [[nodiscard]] py::object old(std::string const& name) const {
        if (!*open_) fail("NotAllowed", "old values can be read while the callback runs; keep what you need");
        py::list known;
        for (meta::Property const& property : change_.properties()) {
            PropertyRow const& row = Core::rowOf(property);
            if (name == row.name || name == snakeCase(row.name))
                return owned(valueToPython(change_.oldValue(property)));
            known.append(snakeCase(row.name));
        }
        fail("NotFound", "the property '" + name + "' did not change" + suggestion(name, known));
    }

  private:
    ElementChange change_;
    Model model_;
    std::shared_ptr<bool> open_;
};

struct Notice {
    py::list created;
    py::list changed;
    py::list destroyed;
};

/// A Python function that is called after commits. Forgetting it needs the interpreter, which may be gone.
class Callback {
  public:
    explicit Callback(py::object function) : function_(std::move(function)) {}
    Callback(Callback const&) = delete;
    Callback& operator=(Callback const&) = delete;
    ~Callback() { clear(); }

    void clear() noexcept {
        if (Py_IsInitialized() == 0) {
            (void)function_.release();
            return;
        }
        py::gil_scoped_acquire const lock;
        function_ = py::object();
    }
    void call(CommitNotice const& notice, Model const& model) const {
        if (!function_) return;
        py::object const function = function_; // it may cancel itself
        auto const open = std::make_shared<bool>(true);
        Notice seen;
        for (ModelElement const& element : notice.created)
            seen.created.append(owned(wrap(element.get(), model)));
        for (ElementChange const& change : notice.changed)
            seen.changed.append(py::cast(Change(change, model, open)));
        for (ElementChange const& change : notice.destroyed)
            seen.destroyed.append(py::cast(Change(change, model, open)));
        struct Close {
            bool& open;
            ~Close() { open = false; }
        } const close{*open};
        function(seen);
    }

  private:
    py::object function_;
};

/// What `on_commit` returns. The function stays until it is cancelled or the model dies.
struct Subscription {
    std::weak_ptr<Callback> callback;

    void cancel() const {
        if (auto const held = callback.lock()) held->clear();
    }
};

Subscription onCommit(Model const& model, py::object function) {
    if (PyCallable_Check(function.ptr()) == 0) failType("on_commit", "a function", function.ptr());
    auto const callback = std::make_shared<Callback>(std::move(function));
    // The callback must not hold the model, or it would keep alive what keeps it alive.
    brant::zero::ModelImpl* const impl = model.get();
    brant::zero::Subscription subscription = ready(model).onCommit(
        [callback, impl](CommitNotice const& notice) { callback->call(notice, Model(impl)); });
    subscription.detach();
    return {callback};
}

py::object byUuid(Model const& model, py::handle identity) {
    ModelElement const found = ready(model).findElement(uuidOf(identity.ptr(), "by_uuid"));
    if (!found) fail("NotFound", "the model has no element " + py::str(identity).cast<std::string>());
    return owned(wrap(found.get(), model));
}

py::list roots(Model const& model) {
    py::list elements;
    for (ModelElement const& element : ready(model).getTopLevelElements())
        elements.append(owned(wrap(element.get(), model)));
    return elements;
}

py::object verify(Model const& model) {
    std::optional<brant::zero::Violation> violation;
    {
        Unlocked const unlocked(model);
        violation = model.verify();
    }
    if (!violation) return py::none();
    return py::str(violation->rule + ": " + violation->property + ": " + violation->detail);
}

} // namespace

void initModel(py::module_& module) {
    py::class_<Model>(
        module, "Model",
        "A model: the container of all elements. Lives as long as one object of it or of its elements.")
        .def(py::init([] { return zelkor::ast::Ast().getModel(); }), "Makes an empty model.")
        .def("__eq__", [](Model const& a,
                          py::object const& b) { return py::isinstance<Model>(b) && a == b.cast<Model>(); })
        .def("__hash__", [](Model const& model) { return std::hash<Model>()(model) >> 4; })
        .def("__repr__",
             [](Model const& model) {
                 return "<zelkor.Model of " + std::to_string(ready(model).size()) + " elements>";
             })
        .def(
            "__len__", [](Model const& model) { return ready(model).size(); }, "How many elements it has.")
        .def("__bool__", [](Model const&) { return true; })
        .def("__contains__",
             [](Model const& model, py::handle element) {
                 return isElement(element.ptr()) && asElement(element.ptr()).model == model &&
                        asElement(element.ptr()).body != nullptr && asElement(element.ptr()).body->valid();
             })
        .def(
            "transaction", [](Model const& model) { return Level(model); },
            "For `with`: what is done inside is kept at its end and taken back on an exception. Levels nest.")
        .def_property_readonly("elements", roots, "The elements without container.")
        .def("by_uuid", byUuid, "The element of that identity; KeyError if there is none.")
        .def("on_commit", onCommit, py::arg("function"),
             "Calls the function with a notice after each outermost commit, until the result is cancelled.")
        .def("verify", verify, "None, or the first violation of the graph's rules in words. Linear.");

    py::class_<Level>(module, "Transaction", "One level of changes, for `with`.")
        .def("__enter__", &Level::enter, py::return_value_policy::reference_internal)
        .def("__exit__", &Level::exit)
        .def("commit", &Level::commit, "Keeps the changes now.")
        .def("rollback", &Level::rollback, "Takes the changes back now.")
        .def_property_readonly("is_open", &Level::isOpen);

    py::class_<Notice>(module, "Notice", "What an outermost commit did.")
        .def_readonly("created", &Notice::created, "The elements that are new.")
        .def_readonly("changed", &Notice::changed, "A Change for each element that differs.")
        .def_readonly("destroyed", &Notice::destroyed, "A Change for each element that is gone.");

    py::class_<Change>(module, "Change", "What became of one element in a commit.")
        .def_property_readonly("element", &Change::element, "The element; dead if it was destroyed.")
        .def_property_readonly("uuid", &Change::uuid)
        .def_property_readonly("type", &Change::type, "The Python class of the element.")
        .def_property_readonly("properties", &Change::properties, "Names of the properties that differ.")
        .def("old", &Change::old, py::arg("name"), "The value at the start of the transaction.");

    py::class_<Subscription>(module, "Subscription",
                             "A function that is called after commits; `with` cancels it at the end.")
        .def("cancel", &Subscription::cancel)
        .def("__enter__", [](py::object self) { return self; })
        .def("__exit__", [](Subscription const& self, py::args const&) { self.cancel(); });
}

} // namespace zelkor::python
