/// \file
/// The Python object of a model element.
#pragma once

#include "Busy.hpp"

#include <brant/zero/Core.hpp>
#include <brant/zero/Model.hpp>

namespace zelkor::python {

using brant::zero::Core;
using brant::zero::Model;
using brant::zero::ModelElement;
using brant::zero::schema::ClassTable;
using brant::zero::schema::PropertyRow;
using Body = brant::zero::ModelElementImpl;

/// A counted body and the model that it belongs to; or, before it has either, the values that it is to be
/// made with. Two objects of one element are equal, not identical. Objects of elements are no matter of the
/// garbage collector: what they refer to in Python is a dictionary that nobody else sees.
struct ElementObject {
    PyObject_HEAD Body* body; ///< null while the element is pending
    PyObject* pending;        ///< names and values; null once the element is made
    Model model;              ///< keeps the model for as long as the object lives
};

/// \returns the type of a class of elements, made on `base`; null when Python fails. The name must live on.
PyTypeObject* makeElementType(char const* name, PyTypeObject* base, char const* doc);
/// The type of all elements; made first.
PyTypeObject* makeElementRoot(char const* name, char const* doc);

bool isElement(PyObject const* object) noexcept;
inline ElementObject& asElement(PyObject* object) noexcept {
    return *reinterpret_cast<ElementObject*>(object);
}

/// \returns the object of an element; None for null. A new reference.
PyObject* wrap(Body* body);
/// The same where the model is known to be this one.
PyObject* wrap(Body* body, Model const& model);
/// The same with a count on the body that the object takes over.
PyObject* wrapCounted(Body* body, Model const& model);

/// \returns the body, ready for use. \throws DeadHandle for a dead element, and for one that is pending.
Body& bodyOf(ElementObject& self);
[[noreturn]] void refusePending(PyObject* self);
/// \returns the model that an argument stands for: a model, an `Ast`, or that of an element.
Model modelOf(PyObject* object, std::string const& where);
bool isModelLike(PyObject* object);

} // namespace zelkor::python
