/// \file
/// Names, types and signatures of the model as text. See docs/names.md.
///
/// All functions only read, apart from putting resolved targets in the place of placeholders. None of them
/// throws anything of its own.
#pragma once

#include "zelkor/ast/TemplateArg.hpp"
#include "zelkor/ast/types/Type.hpp"

#include <string>
#include <string_view>

namespace zelkor::ast::names {

using Body = brant::zero::ModelElementImpl;

/// \returns a declaration of `declared` with the type, or the type alone when it is empty. A null or dead
/// `type` is one that is not known.
[[nodiscard]] std::string typeName(Body const* type, std::string_view declared, bool skipTypedefs);
/// \returns the name from the outermost scope inward. \requires a `Symbol` or a `Scope`.
[[nodiscard]] std::string qualifiedName(Body const& element);
/// \returns the text of one template argument; `afterPackMark` says that a pack mark stood before it.
[[nodiscard]] std::string argumentName(TemplateArg::Impl const& argument, bool afterPackMark);
/// \returns the declaration in one line.
[[nodiscard]] std::string signature(Symbol::Impl const& symbol);

} // namespace zelkor::ast::names
