// Texts of the model and of the front end in one form, in which equal names and types are equal texts. The
// rules, each with an example, stand in docs/names.md; Spelling.cpp has them in functions of their own.
#pragma once

#include <string>

namespace zelkor::producer::test {

// A name or type with all its scopes and template arguments: the model's own, or a mangled name made
// readable.
std::string fullSpelling(std::string const& text);
// A type as declarations write it: without scopes and template arguments, which the source may leave out.
std::string writtenSpelling(std::string const& text);

} // namespace zelkor::producer::test
