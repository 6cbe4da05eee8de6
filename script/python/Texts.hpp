/// \file
/// Names and texts between Python and the model.
#pragma once

#include "Python.hpp"

#include <string>
#include <string_view>

namespace zelkor::python {

/// \returns the Python name of a member: words in lower case, joined by underscores, and an underscore behind
/// a word that the language has taken. A word begins at a capital behind a small letter or digit, and at the
/// last capital of a row of them when a small letter follows: `NumBits` num_bits, `SSizeTypeKind`
/// s_size_type_kind.
std::string snakeCase(std::string_view name);
/// \returns the name, with an underscore behind it when it is a word of the language.
std::string identifier(std::string name);
/// \returns the dotted name under which Python shows a package or class of the host: "internal.zelkor.ast" is
/// zelkor.ast, and what the kernel has in "brant.zero" stands in zelkor itself.
std::string pythonName(std::string_view hostName);

/// \returns a `str`, or `bytes` where the text is no UTF-8. A new reference.
PyObject* toPython(std::string const& text);
/// \returns a `str`; lone surrogates stay what they are. A new reference.
PyObject* toPython(std::u16string const& text);

/// \returns the bytes of a `str` in UTF-8, of `bytes` or of a path. `where` names the property in the
/// failure.
std::string bytesOf(PyObject* value, std::string const& where);
/// \returns the UTF-16 of a `str` or path.
std::u16string textOf(PyObject* value, std::string const& where);

/// \returns the part of a message that names the nearest of the names, if one is near: "; did you mean
/// 'name'?".
std::string suggestion(std::string const& name, py::list const& names);

} // namespace zelkor::python
