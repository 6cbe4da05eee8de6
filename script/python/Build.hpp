/// \file
/// Elements from keyword arguments, each with all that comes with it in one transaction.
#pragma once

#include "Element.hpp"

#include <optional>
#include <vector>

namespace zelkor::python {

/// What a type of elements does when it is called: `Function(model, name="f", params=[...])` makes the
/// element, without a model an object that is pending. `uuid` gives the identity. \returns a new reference.
PyObject* buildElement(PyTypeObject* type, PyObject* arguments, PyObject* keywords);

/// One change of a model that may bring pending objects into it: a transaction level, opened when it is
/// needed. Dropping it without `commit` abandons the level, and the objects are pending as before.
class Building {
  public:
    explicit Building(Model model) : model_(std::move(model)) {}
    Building(Building const&) = delete;
    Building& operator=(Building const&) = delete;
    ~Building();

    [[nodiscard]] Model const& model() const noexcept { return model_; }
    /// Opens the level, if it is not open.
    void open();
    void commit();
    /// \returns the body of an element, made now if it is pending. \requires an element.
    Body& materialise(PyObject* object);

  private:
    struct Made {
        py::object object;
        PyObject* values;
    };

    void make(PyObject* object);

    Model model_;
    std::optional<Core::Level> level_;
    std::vector<Made> made_;
};

} // namespace zelkor::python
